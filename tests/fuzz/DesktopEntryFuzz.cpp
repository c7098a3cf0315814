#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "BLE_kovra/platform/linux/desktop/DesktopEntry.h"
#include "tests/fuzz/Promise.h"

// A desktop entry that somebody else has written, and the changes that launch at login makes in it.

namespace {

using namespace kovra;

std::vector<std::string> linesOf(std::string_view text) {
    std::vector<std::string> lines;
    fuzz::forEachLine(text, [&](std::string_view line) { lines.emplace_back(line); });
    return lines;
}

bool isGroup(std::string_view line) {
    const auto first = line.find_first_not_of(" \t\r");
    return first != std::string_view::npos && line[first] == '[';
}

// Whether the first list is the second one without some of its elements.
bool isSubsequence(const std::vector<std::string>& less, const std::vector<std::string>& more) {
    auto found = more.begin();
    for (const std::string& each : less) {
        found = std::find(found, more.end(), each);
        if (found == more.end()) return false;
        ++found;
    }
    return true;
}

std::size_t groupsIn(const std::vector<std::string>& lines) {
    return static_cast<std::size_t>(std::ranges::count_if(lines, isGroup));
}

// What must hold after a change of this key: one line was added or replaced, and no other one is new.
void checkChange(const DesktopEntry& before, const DesktopEntry& after, const std::string& key) {
    const auto old = linesOf(before.text());
    auto now = linesOf(after.text());
    const auto written =
        std::ranges::find_if(now, [&](const std::string& line) { return line.starts_with(key + '='); });
    fuzz::promise(written != now.end(), "the value is in the file");
    fuzz::promise(now.size() <= old.size() + 1, "one line is added at most");
    fuzz::promise(groupsIn(now) == groupsIn(old), "no group is added");
    std::string changed = *written;
    auto others = now;
    bool isOneNew = isSubsequence(others, old);
    for (std::size_t i = 0; i < now.size() && !isOneNew; ++i) {
        if (!now[i].starts_with(key + '=')) continue;
        others = now;
        others.erase(others.begin() + static_cast<std::ptrdiff_t>(i));
        isOneNew = isSubsequence(others, old);
    }
    fuzz::promise(isOneNew, "every other line was there before, in the same order");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const std::string key = input.PickValueInArray({"Exec", "Hidden", "Type", "Name", "X-GNOME-Autostart-enabled"});
    const std::string value = input.ConsumeRandomLengthString(40);
    const std::string path = '/' + input.ConsumeRandomLengthString(40);
    const std::string text = input.ConsumeRemainingBytesAsString();

    const DesktopEntry entry(text);
    const bool needsEnd = !text.empty() && !text.ends_with('\n');
    fuzz::promise(entry.text() == text + (needsEnd ? "\n" : ""), "an unchanged entry is written as it was read");
    for (const char* each : {"Exec", "TryExec", "OnlyShowIn", "Hidden"}) {
        const auto truth = entry.boolean(each);
        fuzz::promise(!truth || entry.string(each) == (*truth ? "true" : "false"), "a truth is one of two words");
        for (const std::string& part : entry.list(each)) {
            fuzz::promise(!part.empty() && part.find(';') == std::string::npos, "a list has no empty elements");
        }
    }
    const auto program = entry.program();
    fuzz::promise(!program || !program->empty(), "a program has a name");

    DesktopEntry removed = entry;
    removed.remove(key);
    fuzz::promise(!DesktopEntry(removed.text()).string(key), "a removed key is not in the file");
    fuzz::promise(isSubsequence(linesOf(removed.text()), linesOf(entry.text())), "only lines of the key are removed");

    DesktopEntry set = entry, started = entry;
    set.set(key, value);
    started.setProgram(path);
    if (!entry.hasMainGroup()) {
        fuzz::promise(set.text() == entry.text() && started.text() == entry.text(),
                      "without the group nothing changes");
        return 0;
    }
    checkChange(entry, set, key);
    checkChange(entry, started, "Exec");
    fuzz::promise(set.string(key) == value, "what was set can be read");
    const bool hasBlanks = value.starts_with(' ') || value.ends_with(' ');
    fuzz::promise(hasBlanks || DesktopEntry(set.text()).string(key) == value, "what was written can be read");
    fuzz::promise(DesktopEntry(started.text()).program() == path, "a program of any path can be found again");
    return 0;
}
