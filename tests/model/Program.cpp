#include "tests/model/Program.h"

#include <set>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "BLE_kovra/platform/SystemLog.h"
#include "BLE_kovra/system/GlobalHotkey.h"
#include "tests/fakes/FakeApplication.h"
#include "tests/fakes/FakeFileSystem.h"
#include "tests/fakes/FakePreferences.h"

namespace kovra::model {

class Program::Files : public FakeFileSystem {
  public:
    explicit Files(Journal& journal) : journal_(journal) {}
    Outcome writeWholeFile(const std::string& path, std::string_view text) override {
        Outcome outcome = FakeFileSystem::writeWholeFile(path, text);
        journal_.push_back(words::wrote(path, text, bool(outcome)));
        return outcome;
    }

  private:
    Journal& journal_;
};

class Program::Log : public SystemLog {
  public:
    explicit Log(Journal& journal) : journal_(journal) {}
    void log(std::string_view line) override { journal_.push_back(words::logged(line)); }

  private:
    Journal& journal_;
};

class Program::Preferences : public FakePreferences {
  public:
    explicit Preferences(Journal& journal) : journal_(journal) {}
    void set(std::string_view key, const PreferenceValue& value) override {
        FakePreferences::set(key, value);
        journal_.push_back(words::saved(key, text(value)));
    }

  private:
    // The selection is a set and is saved in no particular order, so its elements are sorted here.
    static std::string text(const PreferenceValue& value) {
        if (const auto* truth = std::get_if<bool>(&value)) return words::truth(*truth);
        if (const auto* string = std::get_if<std::string>(&value)) return *string;
        const auto* array = std::get_if<PreferenceArray>(&value);
        if (array == nullptr) return "something else";
        std::set<std::string> elements;
        for (const PreferenceValue& element : *array) {
            const auto* string = std::get_if<std::string>(&element);
            if (string == nullptr || !elements.insert(*string).second) return "an array of something else";
        }
        return words::keys(elements);
    }

    Journal& journal_;
};

class Program::Desktop : public FakeApplication {
  public:
    explicit Desktop(Journal& journal) : journal_(journal) {}
    void setActivationPolicy(ActivationPolicy policy) override {
        journal_.push_back(policy == ActivationPolicy::accessory ? words::becameAccessory() : "took another policy");
    }
    void beep() override { journal_.push_back(words::beeped()); }

  private:
    Journal& journal_;
};

// One process, from launch to end. The delegate uses the other members, so it is the last member and is destroyed
// first.
struct Program::Process {
    Process(Program& program)
        : desktop(program.journal_),
          platform{desktop,          program.queue_,  program.hid_,       *program.preferences_, *program.files_,
                   *program.log_,    program.locale_, program.statusBar_, program.hotKeys_,      program.login_,
                   program.windows_, program.alerts_, program.processes_, program.workspace_,    program.bundle_},
          state(*program.preferences_),
          helper(*program.files_, *program.log_),
          hotkey(program.hotKeys_),
          texts(program.locale_.preferredLanguages()),
          delegate(AppDelegate::create(platform, state, helper, hotkey, texts)) {
        desktop.onTerminating = [&queue = program.queue_] { queue.stop(); };
    }

    Desktop desktop;
    Platform platform;
    AppState state;
    HelperController helper;
    GlobalHotkey hotkey;
    L10n texts;
    std::vector<Subscription> recorders;
    std::map<std::uint64_t, Subscription> subscribers;
    bool launched = false;
    std::shared_ptr<AppDelegate> delegate;
};

namespace {

using Kind = Action::Kind;

std::string text(const std::vector<HIDDeviceInfo>& devices) {
    std::string text;
    for (const HIDDeviceInfo& device : devices) text += words::device(device.id, device.name, device.connected);
    return text;
}
std::string text(const AppState::Selection& keys) { return words::keys({keys.begin(), keys.end()}); }
std::string text(bool truth) { return words::truth(truth); }
std::string text(AppState::BlockMode mode) { return mode == AppState::BlockMode::always ? "always" : "onDevice"; }

}  // namespace

Program::Program(const Beginning& beginning, Journal& journal)
    : journal_(journal),
      locale_(beginning.languages),
      log_(std::make_shared<Log>(journal)),
      files_(std::make_shared<Files>(journal)),
      preferences_(std::make_shared<Preferences>(journal)) {
    preferences_->stored = beginning.stored;
    if (beginning.deliverAtOnce) hid_.deliverAtOnce();
}

void Program::launch(const std::vector<Action>& early) {
    process_.reset();
    queue_.restart();
    process_ = std::make_shared<Process>(*this);
    record(process_->state.devices, Property::devices);
    record(process_->state.selectedIDs, Property::selectedIDs);
    record(process_->state.isEnabled, Property::isEnabled);
    record(process_->state.mode, Property::mode);
    record(process_->state.blocking, Property::blocking);
    for (const Action& subscription : early) perform(subscription);
    process_->launched = true;
    const std::shared_ptr<AppDelegate> delegate = process_->delegate;
    process_->desktop.run(*delegate);
}

template <typename T>
void Program::record(Published<T>& property, Property name) {
    process_->recorders.push_back(property.subscribe(
        [this, &property, name](const T& coming) {
            journal_.push_back(words::announced(name, text(coming), text(property.get())));
        },
        CurrentValue::drop));
}

template <typename T>
Subscription Program::react(Published<T>& property, const Action& subscription) {
    const auto timesLeft = std::make_shared<int>(subscription.times);
    return property.subscribe(
        [this, timesLeft, reaction = subscription.inner.at(0)](const T&) {
            if ((*timesLeft)-- > 0) perform(reaction);
        },
        subscription.truth ? CurrentValue::deliver : CurrentValue::drop);
}

Subscription Program::subscribe(const Action& subscription) {
    AppState& state = process_->state;
    switch (subscription.property) {
        case Property::devices:
            return react(state.devices, subscription);
        case Property::selectedIDs:
            return react(state.selectedIDs, subscription);
        case Property::isEnabled:
            return react(state.isEnabled, subscription);
        case Property::mode:
            return react(state.mode, subscription);
        case Property::blocking:
            break;
    }
    return react(state.blocking, subscription);
}

// Returns the delegate, which stays alive during the call. Null before launch, after the end, and after its release.
std::shared_ptr<AppDelegate> Program::callableDelegate() const {
    return process_->launched && !process_->desktop.terminated ? process_->delegate : nullptr;
}

std::string Program::snapshot() const {
    const AppState& state = process_->state;
    return text(state.devices.get()) + "\n" + text(state.selectedIDs.get()) + "\n" + text(state.isEnabled.get()) + " " +
           text(state.mode.get()) + " " + text(state.blocking.get());
}

void Program::perform(const Action& action) {
    switch (action.kind) {
        case Kind::attach:
            hid_.attach(action.device);
            break;
        case Kind::detach:
            hid_.detachInterface(action.number);
            break;
        case Kind::removeUnknown:
            hid_.detachUnknown(action.number);
            break;
        case Kind::attachAgain:
            // If a rename followed in the queue, the attachment would be reported under a name that no removal matches.
            if (queue_.isIdle()) hid_.attachAgain(action.number);
            break;
        case Kind::rename:
            hid_.rename(action.number, action.text);
            break;
        case Kind::advance:
        case Kind::advanceToWake:
            queue_.advance(action.time);
            break;
        case Kind::stall:
            queue_.stall(action.time);
            break;
        case Kind::runOneTurn:
            queue_.runOneTurn();
            break;
        case Kind::run:
            queue_.run();
            break;
        case Kind::select:
            process_->state.selectedIDs.set({action.keys.begin(), action.keys.end()});
            break;
        case Kind::enable:
            process_->state.isEnabled.set(action.truth);
            break;
        case Kind::setMode:
            process_->state.mode.set(action.truth ? AppState::BlockMode::always : AppState::BlockMode::onDevice);
            break;
        case Kind::pressHotKey:
            if (process_->hotkey.onTrigger) process_->hotkey.onTrigger();
            break;
        case Kind::failNext:
            for (std::uint64_t i = 0; i < action.number; ++i) files_->failNext(action.text);
            break;
        case Kind::failAlways:
            files_->failAlways(action.text);
            break;
        case Kind::recover:
            files_->failAlways(std::nullopt);
            break;
        case Kind::subscribe:
            process_->subscribers.insert_or_assign(action.number, subscribe(action));
            break;
        case Kind::unsubscribe:
            process_->subscribers.erase(action.number);
            break;
        case Kind::evaluate:
            if (const auto delegate = callableDelegate()) delegate->evaluate();
            break;
        case Kind::quit:
            if (const auto delegate = callableDelegate()) delegate->quit();
            break;
        case Kind::releaseDelegate:
            if (process_->launched) process_->delegate.reset();
            break;
        case Kind::relaunch:
            launch(action.inner);
            break;
    }
}

}  // namespace kovra::model
