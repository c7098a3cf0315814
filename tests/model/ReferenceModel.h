#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/model/Action.h"
#include "tests/model/DeviceRecord.h"

namespace kovra::model {

// A second, shorter implementation of the promised behavior, which works differently from the program.
//
// The queue contains values instead of closures. Whether a queued event still has an effect is decided when it is due.
// Every effect is recorded in the journal.
class ReferenceModel {
  public:
    ReferenceModel(const Beginning& beginning, Journal& journal);

    void perform(const Action& action);

    std::string snapshot() const;
    std::size_t queued() const { return jobs_.size(); }
    // Returns the time until the first end of a grace period, if any grace period is running.
    std::optional<std::chrono::nanoseconds> untilWake() const;

    // The number of grace periods that expired, and of those in which the device returned.
    int endsOfGrace = 0;
    int returnsInTime = 0;

  private:
    using Time = std::chrono::nanoseconds;

    using Devices = std::vector<DeviceRecord::Device>;
    using InterfaceID = DeviceRecord::InterfaceID;

    struct Job {
        enum class Kind { attached, attachedIfStill, removed, wake, devices, selection, isEnabled, mode, hotKey } kind;
        std::uint64_t number = 0;
        DeviceDescription description{};
        Devices devices{};
        DeviceRecord::Removal removal{};
    };
    struct Listener {
        enum class Role { recorder, delegate, subscriber } role;
        Property property;
        std::uint64_t number = 0;
        int timesLeft = 0;
        Action reaction{Action::Kind::run};
        bool gone = false;
    };

    void launch(const std::vector<Action>& early);
    void load();
    bool readsTrue(const PreferenceValue& value) const;

    void post(Job job);
    void runOneTurn();
    void run();
    void advance(Time duration);
    void collectDue();
    void play(const Job& job);

    void report(Job::Kind kind, std::uint64_t number, const DeviceDescription& device);
    void interfaceAttached(InterfaceID id, const DeviceDescription& device);
    void interfaceRemoved(InterfaceID id);
    void publish();
    std::string nameOf(const DeviceDescription& device) const { return device.product.value_or(unknown_); }

    bool delegateLives() const { return held_ || pins_ > 0; }
    template <typename Work>
    void withDelegate(Work work) {
        if (!delegateLives()) return;
        ++pins_;
        work();
        --pins_;
    }
    void evaluate();
    void writeFlag(bool on);
    void quit();

    void announce(Property property, const std::string& coming);
    void subscribe(const Action& action);
    void notify(Listener& listener, const std::string& coming);
    void select(std::set<std::string> keys);
    void enable(bool isEnabled);
    void setMode(bool always);
    std::string stored(Property property) const;
    static std::string text(const Devices& devices);
    std::string modeText() const { return always_ ? "always" : "onDevice"; }
    // Saves what a job of this kind saves, if any.
    void saveFor(Job::Kind kind);
    void save(const std::string& key, const PreferenceValue& value, const std::string& text);

    Journal& journal_;

    // The state of the machine, which persists when a process ends.
    const bool deliverAtOnce_;
    const std::string unknown_;
    std::map<std::string, PreferenceValue, std::less<>> disk_;
    std::map<std::uint64_t, DeviceDescription> plugged_;
    std::uint64_t nextNumber_ = 1;
    std::deque<std::string> failures_;
    std::optional<std::string> failAlways_;
    Time now_{0};

    // The state of the current process.
    bool running_ = false;
    bool launched_ = false;
    bool held_ = false;  // whether the owner still holds the delegate
    int pins_ = 0;       // the number of running tasks that keep the delegate alive
    std::deque<Job> jobs_;
    std::multimap<Time, Job> wakes_;
    DeviceRecord record_;
    std::deque<std::shared_ptr<Listener>> listeners_;  // of all properties, in the order of subscription
    std::optional<bool> lastWritten_;
    bool lastFailed_ = false;
    Devices devices_;
    std::set<std::string> selection_;
    bool enabled_ = true;
    bool always_ = false;
    bool blocking_ = false;
};

}  // namespace kovra::model
