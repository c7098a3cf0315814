#include "BLE_kovra/platform/linux/session/InstanceLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "BLE_kovra/platform/linux/desktop/XdgEnvironment.h"

namespace kovra {

InstanceLock::InstanceLock(const std::string& path)
    // O_NONBLOCK: a pipe of this name must not make the start wait.
    : file_(::open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0600)) {
    static_cast<void>(state());
}

InstanceLock::State InstanceLock::state() const {
    if (!file_.isOpen()) return State::none;
    if (::flock(file_.number(), LOCK_EX | LOCK_NB) == 0) return State::held;
    return errno == EWOULDBLOCK ? State::heldElsewhere : State::none;
}

std::string standardLockPath(const std::string& runtimeFolders) {
    constexpr const char* name = "/ble-kovra.lock";
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    if (runtime != nullptr && runtime[0] == '/') return std::string(runtime) + name;
    const std::string usual = runtimeFolders + '/' + std::to_string(::geteuid());
    if (::access(usual.c_str(), W_OK | X_OK) == 0) return usual + name;
    const std::string config = userConfigFolder();
    utsname machine{};
    if (config.empty() || ::uname(&machine) != 0) return {};
    return config + "/ble-kovra/lock." + machine.nodename;
}

}  // namespace kovra
