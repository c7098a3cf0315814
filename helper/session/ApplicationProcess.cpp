#include "helper/session/ApplicationProcess.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <string>
#include <string_view>

#include "helper/Descriptor.h"

namespace kovra::helper {

namespace {

constexpr std::string_view application = "ble-kovra";

// Returns the beginning of a file of /proc, or an empty string if it cannot be read.
std::string beginningOf(const std::string& path) {
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    std::array<char, 4096> text{};
    const ssize_t size = file.isOpen() ? ::read(file.number(), text.data(), text.size()) : -1;
    return size <= 0 ? std::string() : std::string(text.data(), static_cast<std::size_t>(size));
}

// Returns the name that the process was started as: its first argument, without the folder.
std::string startedAs(pid_t process) {
    const std::string arguments = beginningOf("/proc/" + std::to_string(process) + "/cmdline");
    const std::string program = arguments.substr(0, arguments.find('\0'));
    return program.substr(program.rfind('/') + 1);
}

// Compares the maps of UIDs, since a process may not read the namespaces of another user's process. A process in a
// container usually has another map.
bool isInOurUserNamespace(pid_t process) {
    return beginningOf("/proc/" + std::to_string(process) + "/uid_map") == beginningOf("/proc/self/uid_map");
}

}  // namespace

std::optional<ProcessStatus> applicationOf(uid_t user, pid_t process) {
    auto status = processStatus(process);
    if (!status || status->name != application || status->realUser != user || status->effectiveUser != user)
        return std::nullopt;
    const bool isOurs =
        status->pidNamespaces == 1 && isInOurUserNamespace(process) && startedAs(process) == application;
    return isOurs ? status : std::nullopt;
}

}  // namespace kovra::helper
