// ble-kovra-helper mutes the built-in touchpads while the flag of the user at the machine says "on". With "--release"
// it unmutes the touchpads that an earlier process has left muted, however that process ended. With "--grant GROUP"
// root lets that group mute the built-in touchpads that exist now. udev runs that for each new touchpad.

#include <grp.h>
#include <systemd/sd-daemon.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <exception>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "helper/Daemon.h"
#include "helper/Log.h"
#include "helper/Loop.h"
#include "helper/flag/FlagFolder.h"
#include "helper/pads/Grant.h"
#include "helper/pads/InhibitedAttribute.h"
#include "helper/pads/MutedPads.h"
#include "helper/pads/Muter.h"
#include "helper/pads/Touchpads.h"
#include "helper/pads/Unmute.h"
#include "helper/session/ActiveUser.h"
#include "helper/session/ApplicationWatch.h"

namespace kovra::helper {
namespace {

constexpr const char* flagFolder = "/Library/Application Support/ble-kovra";
constexpr const char* runtimeFolder = "/run/ble-kovra-helper";
// For a moment, for example after sleep, a driver may refuse to reopen its touchpad.
constexpr std::chrono::seconds unmuteTimeout{10};

constexpr std::chrono::seconds restartDelay{30};
// The usual termination signals. After SIGKILL, ExecStopPost unmutes the touchpads under systemd; otherwise the next
// start does.
constexpr std::initializer_list<int> terminationSignals{SIGTERM, SIGINT, SIGHUP, SIGQUIT, SIGUSR1, SIGUSR2, SIGALRM};

// Under a service manager, delays the exit after a failed start. systemd restarts the service one second after any
// exit, as it should after a crash. The cause may persist, for example a link in the flag's path. Constant restarts
// would then keep the machine busy.
void delayRestart() {
    if (::sd_notify(0, "STATUS=Cannot start; trying again") <= 0) return;
    sigset_t awaited;
    ::sigemptyset(&awaited);
    for (const int signal : terminationSignals) ::sigaddset(&awaited, signal);
    ::sigprocmask(SIG_BLOCK, &awaited, nullptr);
    const timespec time{restartDelay.count(), 0};
    ::sigtimedwait(&awaited, nullptr, &time);
}

int serve(MutedPads& mutedPads, const InhibitedAttribute& attribute, bool& hasStarted) {
    Loop loop;
    std::vector<std::unique_ptr<Loop::Watch>> watches;
    for (const int signal : terminationSignals) watches.push_back(loop.onSignal(signal, [&loop] { loop.stop(); }));
    Muter muter(loop, mutedPads, attribute);
    muter.muteOnly({});  // unmutes what an earlier process has left

    const auto flag = FlagFolder::open(loop, flagFolder);
    if (!flag) return 1;
    ActiveUser user(loop);
    ApplicationWatch application(loop);
    Touchpads touchpads(loop);
    Daemon daemon(loop,
                  {.activeUser = [&] { return user.current(); },
                   .isApplicationRunning = [&](uid_t owner) { return application.isRunning(owner); },
                   .releaseApplication = [&] { application.release(); }},
                  *flag, touchpads, muter);
    user.onChange = application.onChange = [&] { daemon.evaluate(); };
    daemon.evaluate();
    hasStarted = true;
    ::sd_notify(0, "READY=1");
    loop.run();
    return daemon.hasFailed() ? 1 : 0;
}

// The lock makes this the only process that mutes and unmutes.
int run(bool isRelease) {
    const InhibitedAttribute attribute;
    MutedPads mutedPads(runtimeFolder);
    const int error = mutedPads.lock(isRelease ? MutedPads::IfMissing::fail : MutedPads::IfMissing::create);
    if (error == EWOULDBLOCK) {
        log(Severity::error, isRelease ? "ble-kovra-helper runs: stop it first" : "another ble-kovra-helper runs");
        if (!isRelease) delayRestart();
        return 1;
    }
    // A folder that is missing holds no muted pads. A folder that cannot be read may hold some.
    int result = isRelease && error != 0 && error != ENOENT ? 1 : 0;
    bool hasStarted = isRelease;
    try {
        if (!isRelease) result = serve(mutedPads, attribute, hasStarted);
    } catch (const std::exception& failure) {
        log(Severity::error, failure.what());
        result = 1;
    }
    if (!unmuteAll(mutedPads, attribute, unmuteTimeout)) result = 1;
    if (result != 0 && !hasStarted) delayRestart();
    return result;
}

int grant(const std::string& name) {
    const group* found = ::getgrnam(name.c_str());
    if (found == nullptr) {
        log(Severity::error, "there is no group " + name);
        return 1;
    }
    return grantPads(found->gr_gid, InhibitedAttribute()) ? 0 : 1;
}

}  // namespace
}  // namespace kovra::helper

int main(int count, char** arguments) {
    const std::string_view option = count > 1 ? arguments[1] : "";
    const bool isRelease = count == 2 && option == "--release";
    const bool isGrant = count == 3 && option == "--grant";
    if (count > 1 && !isRelease && !isGrant) {
        std::fputs("usage: ble-kovra-helper [--release | --grant GROUP]\n", stderr);
        return 2;
    }
    // A closed log must not end the process before it has unmuted the touchpads.
    std::signal(SIGPIPE, SIG_IGN);
    return isGrant ? kovra::helper::grant(arguments[2]) : kovra::helper::run(isRelease);
}
