#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "BLE_kovra/platform/linux/control/HelperService.h"
#include "BLE_kovra/platform/posix/PosixFileSystem.h"
#include "helper/Descriptor.h"
#include "helper/flag/FlagFile.h"
#include "tests/fuzz/Promise.h"
#include "tests/support/posix/TempFolder.h"

#include <fcntl.h>

// A flag of any content: what the helper takes it for, what it makes of it, and what the application writes into it.

namespace {

using namespace kovra;
using helper::FlagFile;

constexpr const char* name = "state";

FlagFile opened(const helper::Descriptor& folder) {
    std::optional<FlagFile> file = FlagFile::open(folder.number(), name, ::geteuid());
    fuzz::promise(file.has_value(), "a regular file of the owner can be opened");
    return std::move(*file);
}

void applicationWrites(const std::string& path, std::string_view word, const helper::Descriptor& folder) {
    PosixFileSystem files;
    fuzz::promise(static_cast<bool>(files.writeWholeFile(path, word)), "the application can write its flag");
    fuzz::promise(readFile(path) == word, "the flag is the word and nothing else");
    const bool isOn = opened(folder).content() == FlagFile::Content::on;
    fuzz::promise(isOn == (word == "on"), "the helper reads what the application has written");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const TempFolder folder(TempFolder::Where::memory);
    static const helper::Descriptor open(::open(folder.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const std::string_view text = fuzz::textOf(data, size);
    const std::string path = folder / name;
    const bool isOn = text == "on";

    writeFile(path, text);
    const FlagFile file = opened(open);
    const auto says = [&](bool on) { return (file.content() == FlagFile::Content::on) == on; };
    fuzz::promise(says(isOn), "only the two bytes \"on\" mute");
    const control::Flag shown = control::readFlag(path);
    fuzz::promise(shown.isReadable && (shown.word == "on") == isOn, "ble-kovractl reads what the helper reads");
    fuzz::promise(shown.word.find('\n') == std::string::npos && shown.word.size() < 100, "a word is shown in one line");
    file.truncate();
    fuzz::promise(says(isOn) && readFile(path).size() <= 3, "a truncated flag says the same in three bytes");
    fuzz::promise(text.size() > 3 || readFile(path) == text, "a short flag is not truncated");
    writeFile(path, text);
    file.cleanContent();
    fuzz::promise(readFile(path) == (isOn ? "on" : "off"), "a cleaned flag says the same in one word");

    for (const std::string_view word : {"on", "off"}) {
        writeFile(path, text);
        applicationWrites(path, word, open);
    }
    applicationWrites(path, "on", open);
    return 0;
}
