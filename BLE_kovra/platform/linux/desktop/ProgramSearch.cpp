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

std::string ownProgram() {
    std::string path = linkTarget("/proc/self/exe").value_or("");
    // The kernel appends " (deleted)" if the file was replaced, for example by an upgrade. Return the path of the new
    // file.
    constexpr std::string_view replaced = " (deleted)";
    if (path.ends_with(replaced) && !isExecutable(path)) path.resize(path.size() - replaced.size());
    return path;
}

}  // namespace kovra
