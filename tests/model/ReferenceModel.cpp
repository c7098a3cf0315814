#include "tests/model/ReferenceModel.h"

#include <algorithm>
#include <utility>
#include <variant>

namespace kovra::model {

namespace {

using Kind = Action::Kind;
using std::chrono::nanoseconds;

// Returns the text for a missing name, which depends only on the first preferred language.
std::string unknownDevice(const std::vector<std::string>& languages) {
    static const std::map<std::string, std::string> texts{
        {"ru-RU", "Неизвестное устройство"}, {"uk", "Невідомий пристрій"},          {"FR-ca", "Appareil inconnu"},
        {"de-AT", "Unbekanntes Gerät"},      {"es-419", "Dispositivo desconocido"},
    };
    const auto found = languages.empty() ? texts.end() : texts.find(languages.front());
    return found == texts.end() ? "Unknown device" : found->second;
}

}  // namespace

ReferenceModel::ReferenceModel(const Beginning& beginning, Journal& journal)
    : journal_(journal),
      deliverAtOnce_(beginning.deliverAtOnce),
      unknown_(unknownDevice(beginning.languages)),
      disk_(beginning.stored) {}

// --- The process

void ReferenceModel::launch(const std::vector<Action>& early) {
    running_ = true;
    launched_ = false;
    jobs_.clear();
    wakes_.clear();
    record_ = {};
    listeners_.clear();
    lastWritten_.reset();
    lastFailed_ = false;
    devices_.clear();
    blocking_ = false;
    load();
    held_ = true;

    const auto all = {Property::devices, Property::selectedIDs, Property::isEnabled, Property::mode,
                      Property::blocking};
    for (const Property property : all) {
        listeners_.push_back(std::make_shared<Listener>(Listener{Listener::Role::recorder, property}));
    }
    for (const Action& subscription : early) perform(subscription);
    launched_ = true;
    withDelegate([&] {
        journal_.push_back(words::becameAccessory());
        for (const auto& [number, device] : plugged_) post({Job::Kind::attachedIfStill, number, device});
        for (const Property property : {Property::selectedIDs, Property::isEnabled, Property::mode}) {
            listeners_.push_back(std::make_shared<Listener>(Listener{Listener::Role::delegate, property}));
        }
        evaluate();
    });
}

void ReferenceModel::load() {
    selection_.clear();
    enabled_ = true;
    always_ = false;
    if (const auto found = disk_.find("selectedDeviceIDs"); found != disk_.end()) {
        if (const auto* array = std::get_if<PreferenceArray>(&found->second)) {
            const bool allTexts = std::ranges::all_of(
                *array, [](const PreferenceValue& value) { return std::holds_alternative<std::string>(value); });
            for (const PreferenceValue& value : *array) {
                if (allTexts) selection_.insert(std::get<std::string>(value));
            }
        }
    }
    if (const auto found = disk_.find("isEnabled"); found != disk_.end()) enabled_ = readsTrue(found->second);
    if (const auto found = disk_.find("blockMode"); found != disk_.end()) {
        const auto* mode = std::get_if<std::string>(&found->second);
        always_ = mode != nullptr && *mode == "always";
    }
}

bool ReferenceModel::readsTrue(const PreferenceValue& value) const {
    static const std::set<std::string> trueTexts{"YES", "true", "1", " -07"};
    if (const auto* truth = std::get_if<bool>(&value)) return *truth;
    if (const auto* number = std::get_if<double>(&value)) return *number < 0 || *number > 0;
    const auto* text = std::get_if<std::string>(&value);
    return text != nullptr && trueTexts.contains(*text);
}

void ReferenceModel::quit() {
    if (!running_ || !launched_ || !held_) return;
    writeFlag(false);
    running_ = false;
    wakes_.clear();
    for (const Job& job : std::exchange(jobs_, {})) saveFor(job.kind);
}

// --- The queue

void ReferenceModel::post(Job job) {
    if (running_) jobs_.push_back(std::move(job));
}

void ReferenceModel::collectDue() {
    while (!wakes_.empty() && wakes_.begin()->first <= now_) {
        jobs_.push_back(wakes_.begin()->second);
        wakes_.erase(wakes_.begin());
    }
}

void ReferenceModel::runOneTurn() {
    for (std::size_t left = jobs_.size(); left > 0 && !jobs_.empty(); --left) {
        const Job job = jobs_.front();
        jobs_.pop_front();
        play(job);
    }
}

void ReferenceModel::run() {
    do {
        collectDue();
        runOneTurn();
    } while (!jobs_.empty() || (!wakes_.empty() && wakes_.begin()->first <= now_));
}

void ReferenceModel::advance(Time duration) {
    const Time end = now_ + duration;
    run();
    while (!wakes_.empty() && wakes_.begin()->first <= end) {
        now_ = wakes_.begin()->first;
        run();
    }
    now_ = end;
}

std::optional<nanoseconds> ReferenceModel::untilWake() const {
    if (wakes_.empty()) return std::nullopt;
    return std::max(nanoseconds(0), wakes_.begin()->first - now_);
}

void ReferenceModel::play(const Job& job) {
    const InterfaceID id{job.description.registered, job.number};
    switch (job.kind) {
        case Job::Kind::attached:
            return interfaceAttached(id, job.description);
        case Job::Kind::attachedIfStill:
            if (plugged_.contains(job.number)) interfaceAttached(id, plugged_.at(job.number));
            return;
        case Job::Kind::removed:
            return interfaceRemoved(id);
        case Job::Kind::wake:
            if (!delegateLives()) return;
            if (!record_.endGrace(job.removal)) {
                ++returnsInTime;
                return;
            }
            ++endsOfGrace;
            return publish();
        case Job::Kind::devices:
            withDelegate([&] {
                announce(Property::devices, text(job.devices));
                devices_ = job.devices;
            });
            break;
        case Job::Kind::selection:
        case Job::Kind::isEnabled:
        case Job::Kind::mode:
            withDelegate([&] { saveFor(job.kind); });
            break;
        case Job::Kind::hotKey:
            withDelegate([&] { enable(!enabled_); });
            journal_.push_back(words::beeped());
            return;
    }
    withDelegate([&] { evaluate(); });
}

void ReferenceModel::saveFor(Job::Kind kind) {
    if (kind == Job::Kind::selection) {
        save("selectedDeviceIDs", PreferenceArray(selection_.begin(), selection_.end()), words::keys(selection_));
    }
    if (kind == Job::Kind::isEnabled) save("isEnabled", enabled_, words::truth(enabled_));
    if (kind == Job::Kind::mode) save("blockMode", modeText(), modeText());
}

void ReferenceModel::perform(const Action& action) {
    const auto plugged = plugged_.find(action.number);
    switch (action.kind) {
        case Kind::attach:
            for (int i = 0; i < action.device.interfaceCount; ++i) {
                const std::uint64_t number = nextNumber_++;
                plugged_.emplace(number, action.device);
                report(Job::Kind::attached, number, action.device);
            }
            break;
        case Kind::detach:
            if (plugged != plugged_.end()) {
                const DeviceDescription gone = plugged->second;
                plugged_.erase(plugged);
                report(Job::Kind::removed, action.number, gone);
            }
            break;
        case Kind::removeUnknown:
            report(Job::Kind::removed, action.number, {});
            break;
        case Kind::attachAgain:
            if (plugged != plugged_.end() && jobs_.empty()) report(Job::Kind::attached, action.number, plugged->second);
            break;
        case Kind::rename:
            if (plugged != plugged_.end()) {
                const DeviceDescription before = plugged->second;
                plugged->second.product = action.text;
                const DeviceDescription after = plugged->second;
                report(Job::Kind::removed, action.number, before);
                report(Job::Kind::attached, action.number, after);
            }
            break;
        case Kind::advance:
        case Kind::advanceToWake:
            advance(action.time);
            break;
        case Kind::stall:
            now_ += action.time;
            break;
        case Kind::runOneTurn:
            runOneTurn();
            break;
        case Kind::run:
            run();
            break;
        case Kind::select:
            select(action.keys);
            break;
        case Kind::enable:
            enable(action.truth);
            break;
        case Kind::setMode:
            setMode(action.truth);
            break;
        case Kind::pressHotKey:
            if (launched_) post({Job::Kind::hotKey});
            break;
        case Kind::failNext:
            failures_.insert(failures_.end(), action.number, action.text);
            break;
        case Kind::failAlways:
            failAlways_ = action.text;
            break;
        case Kind::recover:
            failAlways_.reset();
            break;
        case Kind::subscribe:
            subscribe(action);
            break;
        case Kind::unsubscribe:
            for (const auto& listener : listeners_) {
                if (listener->role == Listener::Role::subscriber && listener->number == action.number) {
                    listener->gone = true;
                }
            }
            break;
        case Kind::evaluate:
            if (launched_ && held_ && running_) withDelegate([&] { evaluate(); });
            break;
        case Kind::quit:
            withDelegate([&] { quit(); });
            break;
        case Kind::releaseDelegate:
            held_ = held_ && !launched_;
            break;
        case Kind::relaunch:
            launch(action.inner);
            break;
    }
}

}  // namespace kovra::model
