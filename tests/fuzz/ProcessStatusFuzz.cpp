#include <sys/types.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "BLE_kovra/platform/linux/control/People.h"
#include "helper/session/ProcessStatus.h"
#include "tests/fuzz/Promise.h"
#include "tests/support/posix/TempFolder.h"

// /proc/PID/status and /proc/PID/stat, as the helper and ble-kovractl read them. Any user may name their processes.

namespace {

using namespace kovra;

// Returns what follows the label in the first line that begins with it.
std::optional<std::string> valueOf(std::string_view text, std::string_view label) {
    std::optional<std::string> value;
    fuzz::forEachLine(text, [&](std::string_view line) {
        if (!value && line.starts_with(label)) value = line.substr(label.size());
    });
    return value;
}

bool hasDigits(std::string_view text) {
    return !text.empty() && std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
}

// Returns the fields between tabs.
std::vector<std::string> fieldsOf(const std::string& text) {
    std::vector<std::string> fields;
    std::istringstream stream(text);
    for (std::string field; std::getline(stream, field, '\t');) fields.push_back(field);
    return fields;
}

void checkStatus(std::string_view text) {
    const auto status = helper::parseProcessStatus(text);
    const auto name = valueOf(text, "Name:\t");
    const auto parent = valueOf(text, "PPid:\t");
    const auto users = valueOf(text, "Uid:\t");
    fuzz::promise(!status || (name && parent && users), "a status has a name, a parent and users");
    if (!status) {
        // Whatever the kernel writes can be read: numbers of at most nine digits between tabs.
        const auto fields = fieldsOf(users.value_or(""));
        const auto isNumber = [](const std::string& field) { return hasDigits(field) && field.size() <= 9; };
        const bool isOrderly =
            name && parent && isNumber(*parent) && fields.size() == 4 && std::ranges::all_of(fields, isNumber);
        fuzz::promise(!isOrderly, "an orderly status can be read");
        return;
    }
    fuzz::promise(status->name == *name, "the first name counts");
    fuzz::promise(status->pidNamespaces >= 1, "a process is in one namespace at least");
    const auto fields = fieldsOf(*users);
    const bool isNumber = fields.size() > 1 && hasDigits(fields[1]) && fields[1].size() < 19;
    fuzz::promise(!isNumber || std::stoull(fields[1]) == status->effectiveUser, "the second user is the effective one");
    // Lines that follow, such as those of a longer name, change nothing.
    const auto more = helper::parseProcessStatus(std::string(text) + "\nName:\tother\nPPid:\t1\nUid:\t0\t0\t0\t0\n");
    fuzz::promise(more && more->name == status->name && more->realUser == status->realUser &&
                      more->effectiveUser == status->effectiveUser && more->parent == status->parent,
                  "only the first line of a label counts");
}

void checkStart(std::string_view text) {
    const auto start = helper::parseProcessStart(text);
    fuzz::promise(!start || *start >= helper::BootTime::zero(), "a process started after the boot");
    // A name with parentheses and numbers cannot move the field.
    const std::string stat = "12 (" + std::string(text) + ") S 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 7 20";
    fuzz::promise(helper::parseProcessStart(stat) == std::chrono::milliseconds(70),
                  "the name does not count as a field");
}

// ble-kovractl sees a process under the name that the helper reads.
void checkList(std::string_view text) {
    static const TempFolder folder(TempFolder::Where::memory);
    std::filesystem::create_directory(folder / "12");
    writeFile(folder / "12/status", text);
    const auto status = helper::parseProcessStatus(text);
    for (const control::Process& process : control::processesNamed("ble-kovra", folder.path())) {
        fuzz::promise(process.id == 12 && valueOf(text, "Name:\t") == "ble-kovra",
                      "only processes of the name are listed");
        fuzz::promise(!status || status->realUser == process.user.id, "both read the same user");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = fuzz::textOf(data, size);
    checkStatus(text);
    checkStart(text);
    checkList(text);
    return 0;
}
