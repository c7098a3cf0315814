#include "BLE_kovra/platform/linux/desktop/ProgramSearch.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "BLE_kovra/platform/linux/desktop/XdgEnvironment.h"

namespace kovra {

namespace {

bool mayBeRun(const std::string& path) {
    std::error_code error;
    return std::filesystem::is_regular_file(path, error) && ::access(path.c_str(), X_OK) == 0;
}

}  // namespace

std::optional<std::string> findProgram(const std::string& name) {
    if (name.find('/') != std::string::npos) return mayBeRun(name) ? std::optional(name) : std::nullopt;
    const char* path = std::getenv("PATH");
    for (const std::string& folder : splitAtColons(path == nullptr ? "" : path)) {
        if (std::string candidate = folder + '/' + name; mayBeRun(candidate)) return candidate;
    }
    return std::nullopt;
}

std::string ownProgram() {
    std::error_code error;
    std::string path = std::filesystem::read_symlink("/proc/self/exe", error).native();
    // The kernel's word for a file whose place another one has taken, as at an update: that one is meant from now on.
    constexpr std::string_view replaced = " (deleted)";
    if (path.ends_with(replaced) && !mayBeRun(path)) path.resize(path.size() - replaced.size());
    return path;
}

}  // namespace kovra
