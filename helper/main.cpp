// ble-kovra-helper mutes the built-in touchpads while the application of the user at the machine is running and that
// user's flag says "on". With "--release" it unmutes the touchpads that an earlier process has left muted, however that
// process ended. With "--grant GROUP", run by root, it lets that group mute the built-in touchpads that exist now. The
// unit runs "--grant" before each start of the daemon. udev's rule runs it for each new touchpad and each new device
// that may be a twin.

#include <grp.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "helper/Daemon.h"
#include "helper/EarlyEnds.h"
#include "helper/Log.h"
#include "helper/Loop.h"
#include "helper/Notifier.h"
#include "helper/Watchdog.h"
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
// How long the process retries to unmute the touchpads at its end. For a moment, for example after sleep, a driver may
// refuse to reopen its touchpad.
constexpr std::chrono::seconds unmuteTimeout{10};

constexpr std::chrono::seconds restartDelay{30};
// How long the daemon waits to report its start again if the service manager's queue is full.
constexpr std::chrono::seconds reportDelay{1};
// The signals on which the daemon unmutes the touchpads and ends. After SIGKILL, ExecStopPost unmutes the touchpads
// under systemd; otherwise the next start does.
constexpr std::initializer_list<int> terminationSignals{SIGTERM, SIGINT, SIGHUP, SIGQUIT, SIGUSR1, SIGUSR2, SIGALRM};

// A daemon that has served for this long has not ended early, so the count of early ends is cleared.
constexpr std::chrono::seconds shortestService{10};

// Waits, but at most until a termination signal arrives. Returns whether one has arrived.
bool waitFor(std::chrono::seconds time) {
    sigset_t awaited;
    ::sigemptyset(&awaited);
    for (const int signal : terminationSignals) ::sigaddset(&awaited, signal);
    ::sigprocmask(SIG_BLOCK, &awaited, nullptr);
    const timespec duration{time.count(), 0};
    return ::sigtimedwait(&awaited, nullptr, &duration) > 0;
}

// Under a service manager, delays the exit after a failed start. systemd restarts the service one second after any
// exit, as it should after a crash. The cause of the failure may persist, for example a link in the flag's path.
// Constant restarts would then keep the machine busy.
void delayRestart(const Notifier& notifier) {
    if (notifier.notify("STATUS=Cannot start; trying again") != Notifier::Result::failed) waitFor(restartDelay);
}

// Under a service manager, delays a start after several crashes. Returns false if the daemon is to end instead.
bool delayStart(std::chrono::seconds delay, const Notifier& notifier) {
    if (delay.count() == 0 || notifier.notify("STATUS=Has crashed several times; waiting") == Notifier::Result::failed)
        return true;
    log(Severity::warning, "ended early several times in a row, waits for " + std::to_string(delay.count()) + " s");
    return !waitFor(delay);
}

int serve(MutedPads& mutedPads, const InhibitedAttribute& attribute, const EarlyEnds& earlyEnds,
          const Notifier& notifier, bool& hasStarted) {
    const std::chrono::seconds delay = earlyEnds.begin();
    Loop loop;
    std::vector<std::unique_ptr<Loop::Watch>> watches;
    for (const int signal : terminationSignals) watches.push_back(loop.onSignal(signal, [&loop] { loop.stop(); }));
    Muter muter(loop, mutedPads, attribute);
    muter.muteOnly({});  // unmutes what an earlier process has left
    if (!delayStart(delay, notifier)) return 0;
    Watchdog watchdog(loop, [&](const std::string& state) { return notifier.notify(state); });
    muter.onChange = [&](bool isAnyMuted) { watchdog.setMuted(isAnyMuted); };
    if (!mutedPads.names().empty()) watchdog.setMuted(true);  // a driver has refused to unmute what was left

    const auto flag = FlagFolder::open(loop, flagFolder);
    if (!flag) return 1;
    ActiveUser user(loop);
    ApplicationWatch application(loop);
    Touchpads touchpads(loop);
    Daemon daemon(loop,
                  {.activeUser = [&] { return user.current(); },
                   .heldApplicationStart = [&](uid_t owner) { return application.heldStartOf(owner); },
                   .applicationStart = [&](uid_t owner) { return application.startOf(owner); },
                   .releaseApplication = [&] { application.release(); }},
                  *flag, touchpads, muter);
    user.onChange = application.onChange = [&] { daemon.evaluate(); };
    daemon.evaluate();
    hasStarted = true;
    std::unique_ptr<Loop::Watch> later;
    const Loop::Work reportStart = [&] {
        if (notifier.notify("READY=1") == Notifier::Result::full) later = loop.after(reportDelay, reportStart);
    };
    reportStart();
    const auto served = loop.after(shortestService, [&] { earlyEnds.clear(); });
    loop.run();
    return daemon.hasFailed() ? 1 : 0;
}

// Runs the daemon, or unmutes what an earlier one has left muted. Fails if another process holds the lock, so that only
// one process at a time mutes and unmutes.
int run(bool isRelease) {
    const InhibitedAttribute attribute;
    const Notifier notifier(std::getenv("NOTIFY_SOCKET"));
    MutedPads mutedPads(runtimeFolder);
    const int error = mutedPads.lock(isRelease ? MutedPads::IfMissing::fail : MutedPads::IfMissing::create);
    if (error == EWOULDBLOCK) {
        log(Severity::error, isRelease ? "ble-kovra-helper runs: stop it first" : "another ble-kovra-helper runs");
        if (!isRelease) delayRestart(notifier);
        return 1;
    }
    const EarlyEnds earlyEnds(std::string(runtimeFolder) + "/early-ends");
    // A missing folder contains no records of muted pads. A folder that cannot be opened may contain some.
    int result = isRelease && error != 0 && error != ENOENT ? 1 : 0;
    bool hasStarted = isRelease;
    try {
        if (!isRelease) result = serve(mutedPads, attribute, earlyEnds, notifier, hasStarted);
    } catch (const std::exception& failure) {
        log(Severity::error, failure.what());
        result = 1;
    }
    if (!unmuteAll(mutedPads, attribute, unmuteTimeout)) result = 1;
    if (result != 0 && !hasStarted) delayRestart(notifier);
    if (!isRelease) earlyEnds.clear();
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
    // A write to a closed log must not end the process before it has unmuted the touchpads.
    std::signal(SIGPIPE, SIG_IGN);
    // Neither may the signal that the kernel sends if another process opens a left file just while the helper has a
    // lease on it (see FlagFile::isOpenForWriting()).
    std::signal(SIGIO, SIG_IGN);
    return isGrant ? kovra::helper::grant(arguments[2]) : kovra::helper::run(isRelease);
}
