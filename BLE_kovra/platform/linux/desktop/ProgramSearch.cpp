#include "BLE_kovra/platform/linux/desktop/ProgramSearch.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>

#include "BLE_kovra/platform/linux/desktop/XdgEnvironment.h"
#include "BLE_kovra/platform/posix/Path.h"

namespace kovra {

namespace {

bool isExecutable(const std::string& path) {
    struct stat status{};
    return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && ::access(path.c_str(), X_OK) == 0;
}

// The path of the program that this process runs, and whether its file was replaced or removed.
struct OwnFile {
    std::string path;
    bool isReplaced;
};

OwnFile ownFile() {
    OwnFile file{linkTarget("/proc/self/exe").value_or(""), false};
    // The kernel appends this if the file was replaced or removed.
    constexpr std::string_view replaced = " (deleted)";
    file.isReplaced = file.path.ends_with(replaced) && !isExecutable(file.path);
    if (file.isReplaced) file.path.resize(file.path.size() - replaced.size());
    return file;
}

}  // namespace

std::optional<std::string> findProgram(const std::string& name, const PathVisitor& visitor) {
    const auto isProgram = [&visitor](const std::string& path) {
        if (visitor) visitor(path);
        return isExecutable(path);
    };
    if (name.find('/') != std::string::npos) return isProgram(name) ? std::optional(name) : std::nullopt;
    const char* path = std::getenv("PATH");
    for (const std::string& folder : splitAtColons(path == nullptr ? "" : path)) {
        if (std::string candidate = folder + '/' + name; isProgram(candidate)) return candidate;
    }
    return std::nullopt;
}

// After an upgrade this is the path of the new file.
std::string ownProgram() { return ownFile().path; }

bool isOwnProgramReplaced() { return ownFile().isReplaced; }

}  // namespace kovra
