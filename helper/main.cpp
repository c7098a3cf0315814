// ble-kovra-helper: mutes the built-in touchpads while the flag of the user at the machine says so. With "--release" it
// gives back what such a process, however it ended, has left muted.

#include <systemd/sd-daemon.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <exception>
#include <initializer_list>
#include <memory>
#include <string_view>
#include <vector>

#include "helper/Daemon.h"
#include "helper/Log.h"
#include "helper/Loop.h"
#include "helper/flag/FlagFolder.h"
#include "helper/pads/GiveBack.h"
#include "helper/pads/InputClass.h"
#include "helper/pads/Muter.h"
#include "helper/pads/Records.h"
#include "helper/pads/Touchpads.h"
#include "helper/session/ActiveUser.h"
#include "helper/session/ApplicationWatch.h"

namespace kovra::helper {
namespace {

constexpr const char* flagFolder = "/Library/Application Support/ble-kovra";
constexpr const char* runtimeFolder = "/run/ble-kovra-helper";
// A driver that refuses its touchpad does so for a moment, as after waking from sleep.
constexpr std::chrono::seconds patienceAtTheEnd{10};

constexpr std::chrono::seconds untilTheNextStart{30};
// Whatever a person may end it with; what no process hears of is for the next start to deal with.
constexpr std::initializer_list<int> endings{SIGTERM, SIGINT, SIGHUP, SIGQUIT, SIGUSR1, SIGUSR2, SIGALRM};

// A service manager starts what has ended anew at once, as it should after a crash. What keeps the daemon from starting
// may last, as a link in the way of the flag does, and must not keep the machine busy.
void waitForTheNextStart() {
    if (::sd_notify(0, "STATUS=Cannot start; trying again") <= 0) return;
    sigset_t awaited;
    ::sigemptyset(&awaited);
    for (const int signal : endings) ::sigaddset(&awaited, signal);
    ::sigprocmask(SIG_BLOCK, &awaited, nullptr);
    const timespec time{untilTheNextStart.count(), 0};
    ::sigtimedwait(&awaited, nullptr, &time);
}

int serve(Records& records, const InputClass& inputs, bool& hasStarted) {
    Loop loop;
    std::vector<std::unique_ptr<Loop::Watch>> watches;
    for (const int signal : endings) watches.push_back(loop.onSignal(signal, [&loop] { loop.stop(); }));
    Muter muter(loop, records, inputs);
    muter.muteExactly({});  // whatever a process before this one has left

    const auto flag = FlagFolder::open(loop, flagFolder);
    if (!flag) return 1;
    ActiveUser user(loop);
    ApplicationWatch application(loop);
    Touchpads touchpads(loop);
    Daemon daemon(loop,
                  {.atTheMachine = [&] { return user.current(); },
                   .runsTheApplication = [&](uid_t of) { return application.lives(of); },
                   .forgetTheApplication = [&] { application.forget(); }},
                  *flag, touchpads, muter);
    user.onChange = application.onEnd = [&] { daemon.evaluate(); };
    daemon.evaluate();
    hasStarted = true;
    ::sd_notify(0, "READY=1");
    loop.run();
    return daemon.hasFailed() ? 1 : 0;
}

// Whoever has the records is the only one to mute and to give back.
int run(bool isRelease) {
    const InputClass inputs;
    Records records(runtimeFolder);
    const int error = records.claim(isRelease ? Records::IfMissing::leave : Records::IfMissing::make);
    if (error == EWOULDBLOCK) {
        log(Severity::error, isRelease ? "ble-kovra-helper runs: stop it first" : "another ble-kovra-helper runs");
        if (!isRelease) waitForTheNextStart();
        return 1;
    }
    // What cannot be read may hold something; where there is nothing there is nothing to give back.
    int result = isRelease && error != 0 && error != ENOENT ? 1 : 0;
    bool hasStarted = isRelease;
    try {
        if (!isRelease) result = serve(records, inputs, hasStarted);
    } catch (const std::exception& failure) {
        log(Severity::error, failure.what());
        result = 1;
    }
    if (!giveBackAll(records, inputs, patienceAtTheEnd)) result = 1;
    if (result != 0 && !hasStarted) waitForTheNextStart();
    return result;
}

}  // namespace
}  // namespace kovra::helper

int main(int count, char** arguments) {
    const bool isRelease = count == 2 && std::string_view(arguments[1]) == "--release";
    if (count > 1 && !isRelease) {
        std::fputs("usage: ble-kovra-helper [--release]\n", stderr);
        return 2;
    }
    // A line for the log must not end whoever still has touchpads to give back.
    std::signal(SIGPIPE, SIG_IGN);
    return kovra::helper::run(isRelease);
}
