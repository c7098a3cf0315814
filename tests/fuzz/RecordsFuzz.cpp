#include <fcntl.h>
#include <fuzzer/FuzzedDataProvider.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <set>
#include <string>
#include <string_view>
#include <system_error>

#include "helper/Descriptor.h"
#include "helper/EarlyEnds.h"
#include "helper/pads/MutedPads.h"
#include "tests/fuzz/Promise.h"
#include "tests/support/posix/TempFolder.h"

// What the helper finds in its runtime folder: the list of the pads that it has muted, and the count of its crashes.

namespace {

using namespace kovra;
using namespace std::chrono_literals;

bool isNameOfAnInput(std::string_view name) {
    if (!name.starts_with("input") || name.size() < 6 || name.size() > 25) return false;
    return std::ranges::all_of(name.substr(5), [](char c) { return c >= '0' && c <= '9'; });
}

std::string aName(FuzzedDataProvider& input) {
    const std::string name = input.ConsumeRandomLengthString(30);
    return input.ConsumeBool() ? "input" + name : name;
}

void checkList(FuzzedDataProvider& input) {
    const TempFolder folder(TempFolder::Where::memory);
    std::filesystem::create_directory(folder / "pads");
    std::set<std::string> expected;
    for (int i = 0; i < 4; ++i) {
        const std::string name = aName(input);
        const bool isFile =
            !name.empty() && name.find('/') == std::string::npos && name.find('\0') == std::string::npos;
        if (!isFile || name == "." || name == ".." || name.size() > 200) continue;
        const helper::Descriptor made(
            ::open((folder / ("pads/" + name)).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
        if (made.isOpen() && isNameOfAnInput(name)) expected.insert(name);
    }
    helper::MutedPads pads(folder.path());
    fuzz::promise(pads.names() == expected, "only names of input devices are in the list");
    fuzz::promise(pads.lock(helper::MutedPads::IfMissing::create) == 0 && pads.names() == expected, "nothing is lost");
    const std::string added = aName(input);
    const bool isAdded = pads.add(added) == 0;
    fuzz::promise(isAdded == isNameOfAnInput(added), "only the name of an input device can be added");
    if (isAdded) expected.insert(added);
    fuzz::promise(helper::MutedPads(folder.path()).names() == expected, "another process reads the same list");
    if (!isAdded) return;
    pads.remove(added);
    expected.erase(added);
    fuzz::promise(helper::MutedPads(folder.path()).names() == expected, "a removed device is not in the list");
}

void checkEarlyEnds(std::string_view text) {
    static const TempFolder folder(TempFolder::Where::memory);
    const std::string file = folder / "starts";
    writeFile(file, text);
    const helper::EarlyEnds ends(file);
    const bool isCount = !text.empty() && text[0] >= '0' && text[0] <= '9';
    int before = isCount ? std::min(text[0] - '0', 7) : 0;
    for (int start = 0; start < 9; ++start, before = std::min(before + 1, 7)) {
        const auto expected = before < 3 ? 0s : 2s * (1 << (before - 2));
        fuzz::promise(ends.begin() == expected, "the delays are 0, 0, 0, 4, 8, 16, 32 and 64 s");
    }
    ends.clear();
    fuzz::promise(ends.begin() == 0s, "a good run forgets the crashes");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    checkEarlyEnds(input.ConsumeRandomLengthString(8));
    checkList(input);
    return 0;
}
