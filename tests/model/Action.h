#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "BLE_kovra/platform/PreferencesStore.h"
#include "tests/fakes/FakeHID.h"

namespace kovra::model {

// The properties of AppState that can have subscribers.
enum class Property { devices, selectedIDs, isEnabled, mode, blocking };

// One step of a life: an event from outside, or what a subscriber does during an announcement. A life is a list of
// actions that begins with a relaunch. All later actions can be performed in any order, so that a failing life can be
// shortened. The comment beside each kind names the members that it uses.
struct Action {
    enum class Kind {
        attach,         // device: all its interfaces are attached
        detach,         // number: that interface is removed, if it is attached
        removeUnknown,  // number: the system reports a removal without an attachment
        attachAgain,    // number: an attached interface is reported a second time
        rename,         // number, text: an attached interface is removed and attached again with another name
        advance,        // time
        advanceToWake,  // time: until this long after the end of the earliest grace period
        stall,          // time: how long the program does not run
        runOneTurn,
        run,
        select,       // keys
        enable,       // truth
        setMode,      // truth: whether the mode is `always`
        pressHotKey,  //
        failNext,     // number: how many writes fail, text: the reason
        failAlways,   // text: the reason
        recover,      // ends failAlways
        // number, property, times: how often the subscriber reacts, truth: whether the current value is delivered at
        // once, inner: the subscriber's reaction
        subscribe,
        unsubscribe,  // number
        evaluate,
        quit,
        releaseDelegate,
        relaunch,  // inner: subscriptions made before the launch
    };

    Kind kind;
    DeviceDescription device{};
    std::uint64_t number = 0;
    std::chrono::nanoseconds time{0};
    std::set<std::string> keys{};
    bool truth = false;
    std::string text{};
    Property property = Property::devices;
    int times = 1;
    std::vector<Action> inner{};
};

// The initial state of a life.
struct Beginning {
    std::vector<std::string> languages;
    std::map<std::string, PreferenceValue, std::less<>> stored;
    bool deliverAtOnce = false;
};

std::string describe(const Action& action);
std::string describe(Property property);

// All externally visible effects in order, one line each.
using Journal = std::vector<std::string>;

// The lines of a journal. The program and the model use the same words, so that their journals can be compared.
namespace words {
inline std::string wrote(std::string_view path, std::string_view text, bool succeeded) {
    return "wrote " + std::string(text) + (succeeded ? " to " : " without success to ") + std::string(path);
}
inline std::string logged(std::string_view line) { return "logged " + std::string(line); }
inline std::string saved(std::string_view key, std::string_view value) {
    return "saved " + std::string(key) + " = " + std::string(value);
}
inline std::string beeped() { return "beeped"; }
inline std::string becameAccessory() { return "became an accessory"; }
inline std::string announced(Property property, std::string_view coming, std::string_view stored) {
    return "announced " + describe(property) + " " + std::string(coming) + ", stored " + std::string(stored);
}
inline std::string device(std::string_view id, std::string_view name, bool connected) {
    return (connected ? "+" : "-") + std::string(id) + "|" + std::string(name) + ";";
}
inline std::string truth(bool value) { return value ? "true" : "false"; }
std::string keys(const std::set<std::string>& keys);
}  // namespace words

}  // namespace kovra::model
