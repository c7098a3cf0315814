#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>

#include "helper/Daemon.h"
#include "helper/pads/InhibitedAttribute.h"
#include "helper/pads/MutedPads.h"
#include "helper/pads/Muter.h"
#include "helper/pads/Touchpads.h"
#include "helper/pads/Unmute.h"
#include "tests/helper/flag/FlagRig.h"
#include "tests/helper/pads/MockInputs.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra::helper {

// A laptop with a pad and its twin, a flag folder, and a daemon. The test decides which user is at the machine and
// which users run the application.
class DaemonRig {
  public:
    DaemonRig() {
        computer.addDevice(pad);
        computer.addDevice(twin);
    }

    void start() {
        held.reset();
        mutedPads = std::make_unique<MutedPads>(runtime());
        muter = std::make_unique<Muter>(flag.loop(), *mutedPads, attribute_);
        muter->muteOnly({});
        touchpads = std::make_unique<Touchpads>(flag.loop());
        daemon = std::make_unique<Daemon>(flag.loop(), session(), flag.folder(), *touchpads, *muter);
        daemon->evaluate();
    }
    // Destroys the daemon without unmuting the pads, as SIGKILL would.
    void kill() {
        daemon.reset();
        touchpads.reset();
        muter.reset();
        mutedPads.reset();
    }
    // Does what the helper's option --release does. The unit runs it after the daemon has ended.
    bool release() const {
        MutedPads listed(runtime());
        return unmuteAll(listed, attribute_, std::chrono::milliseconds(0));
    }

    // Puts this user at the machine and counts the user's application as running. With std::nullopt, nobody is at the
    // machine.
    void switchTo(std::optional<uid_t> user) {
        activeUser = user;
        if (user) running.insert(*user);
        daemon->evaluate();
    }
    void endApplication(uid_t user) {
        running.erase(user);
        daemon->evaluate();
    }
    void startMuted() {
        start();
        switchTo(alice);
        flag.write(alice, "on");
        if (!becomes("1")) throw std::runtime_error("the pad is not muted");
    }

    // Waits up to ten seconds until the attribute `inhibited` of the pad and of its twin has this value. Returns
    // whether that happened.
    bool becomes(const std::string& value) {
        return flag.runUntil([&] { return is(value); });
    }
    bool is(const std::string& value) const {
        return computer.inhibited("input5") == value && computer.inhibited("input4") == value;
    }
    // Causes an event of the flag, and waits until the daemon evaluates again.
    void awaitLook() {
        const int before = looks;
        std::filesystem::permissions(flag.state(), std::filesystem::status(flag.state()).permissions());
        if (!flag.runUntil([&] { return looks > before; })) throw std::runtime_error("the daemon does not look");
    }
    std::set<std::string> recordedPads() const { return MutedPads(runtime()).names(); }
    std::string runtime() const { return folder_ / "run"; }

    MockInputs computer;
    FlagRig flag{TempFolder::Where::disk};  // umockdev takes files below /dev, as those in memory are, for devices
    std::optional<uid_t> activeUser;
    std::set<uid_t> running;
    std::optional<uid_t> held;         // the user whose application the daemon holds
    std::optional<uid_t> searchedFor;  // the user whose application was last searched
    bool wasMutedInSearch = false;     // whether the pad was muted during that search
    int releases = 0;
    int looks = 0;  // how often the daemon has queried who is at the machine

  private:
    Daemon::Session session() {
        return {.activeUser =
                    [this] {
                        ++looks;
                        return activeUser;
                    },
                .heldApplicationStart = [this](uid_t user) -> std::optional<BootTime> {
                    if (held != user || !running.contains(user)) return std::nullopt;
                    return BootTime::zero();
                },
                .applicationStart = [this](uid_t user) -> std::optional<BootTime> {
                    searchedFor = user;
                    wasMutedInSearch = is("1");
                    held.reset();
                    if (!running.contains(user)) return std::nullopt;
                    held = user;
                    return BootTime::zero();
                },
                .releaseApplication =
                    [this] {
                        held.reset();
                        ++releases;
                    }};
    }

    const TempFolder folder_;
    const InhibitedAttribute attribute_;

  public:
    std::unique_ptr<MutedPads> mutedPads;
    std::unique_ptr<Muter> muter;
    std::unique_ptr<Touchpads> touchpads;
    std::unique_ptr<Daemon> daemon;
};

}  // namespace kovra::helper
