#include "BLE_kovra/platform/linux/desktop/ProgramSearch.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "BLE_kovra/platform/linux/desktop/XdgEnvironment.h"

namespace kovra {

namespace {

bool isExecutable(const std::string& path) {
    std::error_code error;
    return std::filesystem::is_regular_file(path, error) && ::access(path.c_str(), X_OK) == 0;
}

}  // namespace

std::optional<std::string> findProgram(const std::string& name) {
    if (name.find('/') != std::string::npos) return isExecutable(name) ? std::optional(name) : std::nullopt;
    const char* path = std::getenv("PATH");
    for (const std::string& folder : splitAtColons(path == nullptr ? "" : path)) {
        if (std::string candidate = folder + '/' + name; isExecutable(candidate)) return candidate;
    }
    return std::nullopt;
}

std::string ownProgram() {
    std::error_code error;
    std::string path = std::filesystem::read_symlink("/proc/self/exe", error).native();
    // The kernel appends " (deleted)" if the file was replaced, for example by an upgrade. Return the path of the new
    // file.
    constexpr std::string_view replaced = " (deleted)";
    if (path.ends_with(replaced) && !isExecutable(path)) path.resize(path.size() - replaced.size());
    return path;
}

}  // namespace kovra
