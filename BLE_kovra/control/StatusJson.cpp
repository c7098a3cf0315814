#include "BLE_kovra/control/StatusJson.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "BLE_kovra/control/Verdict.h"

namespace kovra::control {

namespace {

std::string json(bool value) { return value ? "true" : "false"; }
std::string json(std::int64_t value) { return std::to_string(value); }
std::string json(const std::string& value) { return jsonString(value); }
std::string json(const char* value) { return jsonString(value); }
std::string json(const Moment& moment) { return json(moment.seconds); }
std::string json(const Person& person) { return jsonString(person.name); }
template <typename T>
std::string json(const std::optional<T>& value) {
    return value ? json(*value) : "null";
}
// Returns null for an empty text.
std::string orNull(const std::string& text) { return text.empty() ? "null" : jsonString(text); }

// Collects the members of an object.
class Object {
  public:
    // `value` is JSON text.
    Object& add(std::string_view name, const std::string& value) {
        text_ += (text_.empty() ? "" : ",") + jsonString(name) + ':' + value;
        return *this;
    }
    std::string text() const { return '{' + text_ + '}'; }

  private:
    std::string text_;
};

template <typename T, typename Convert>
std::string list(const std::vector<T>& items, Convert convert) {
    std::string text;
    for (const T& item : items) text += (text.empty() ? "" : ",") + convert(item);
    return '[' + text + ']';
}

const char* word(Verdict::Answer answer) {
    switch (answer) {
        case Verdict::Answer::works:
            return "works";
        case Verdict::Answer::muted:
            return "muted";
        case Verdict::Answer::unknown:
            break;
    }
    return "unknown";
}

const char* word(Pad::Kind kind) {
    switch (kind) {
        case Pad::Kind::builtIn:
            return "builtIn";
        case Pad::Kind::twin:
            return "twin";
        case Pad::Kind::other:
            break;
    }
    return "other";
}

const char* word(ChosenDevice::Presence presence) {
    switch (presence) {
        case ChosenDevice::Presence::connected:
            return "connected";
        case ChosenDevice::Presence::inGrace:
            return "inGrace";
        case ChosenDevice::Presence::away:
            break;
    }
    return "away";
}

const char* word(Application::Contact contact) {
    switch (contact) {
        case Application::Contact::answered:
            return "answered";
        case Application::Contact::tooOld:
            return "tooOld";
        case Application::Contact::silent:
            return "silent";
        case Application::Contact::foreign:
            return "foreign";
        case Application::Contact::absent:
            return "absent";
        case Application::Contact::noBus:
            break;
    }
    return "noBus";
}

const char* word(Application::HotKey hotKey) {
    switch (hotKey) {
        case Application::HotKey::ours:
            return "ours";
        case Application::HotKey::taken:
            return "taken";
        case Application::HotKey::onRequest:
            return "onRequest";
        case Application::HotKey::unavailable:
            return "unavailable";
        case Application::HotKey::unknown:
            break;
    }
    return "unknown";
}

const char* word(Application::Tray tray) {
    switch (tray) {
        case Application::Tray::panel:
            return "panel";
        case Application::Tray::embedded:
            return "embedded";
        case Application::Tray::none:
            return "none";
        case Application::Tray::unknown:
            break;
    }
    return "unknown";
}

const char* word(Service::State state) {
    switch (state) {
        case Service::State::running:
            return "running";
        case Service::State::starting:
            return "starting";
        case Service::State::stopped:
            return "stopped";
        case Service::State::failed:
            return "failed";
        case Service::State::missing:
            return "missing";
        case Service::State::unknown:
            break;
    }
    return "unknown";
}

std::string padJson(const Pad& pad) {
    return Object()
        .add("input", json(pad.input))
        .add("name", json(pad.name))
        .add("kind", json(word(pad.kind)))
        .add("muted", json(pad.isMuted))
        .add("mutedByService", json(pad.isRecorded))
        .add("since", json(pad.recordedSince))
        .add("serviceMayMute", json(pad.mayServiceMute))
        .add("error", orNull(pad.error))
        .text();
}

std::string processJson(const Process& process) {
    return Object().add("pid", json(std::int64_t{process.id})).add("user", json(process.user)).text();
}

std::string chosenJson(const ChosenDevice& device) {
    return Object().add("name", json(device.name)).add("presence", json(word(device.presence))).text();
}

std::string applicationJson(const Application& application) {
    const bool isKnown = application.hasAnswered();
    const auto ifKnown = [&](const std::string& value) { return isKnown ? value : std::string("null"); };
    const auto text = [](const std::string& each) { return jsonString(each); };
    return Object()
        .add("contact", json(word(application.contact)))
        .add("error", orNull(application.error))
        .add("processes", list(application.processes, processJson))
        .add("version", orNull(application.version))
        .add("enabled", ifKnown(json(application.isEnabled)))
        .add("mode", ifKnown(json(application.isAlways ? "always" : "onDevice")))
        .add("muting", ifKnown(json(application.isMuting)))
        .add("lastWritten", ifKnown(orNull(application.lastWritten)))
        .add("chosen", ifKnown(list(application.chosen, chosenJson)))
        .add("hotKey", ifKnown(json(word(application.hotKey))))
        .add("combination", ifKnown(orNull(application.combination)))
        .add("tray", ifKnown(json(word(application.tray))))
        .add("watcher", ifKnown(orNull(application.watcher)))
        .add("sessionBusFailures", ifKnown(list(application.sessionBusFailures, text)))
        .add("systemBusFailures", ifKnown(list(application.systemBusFailures, text)))
        .text();
}

std::string serviceJson(const Service& service) {
    return Object()
        .add("state", json(word(service.state)))
        .add("unitState", orNull(service.unitState))
        .add("error", orNull(service.error))
        .text();
}

std::string flagJson(const Flag& flag) {
    return Object()
        .add("word", flag.isReadable ? json(flag.word) : "null")
        .add("written", json(flag.written))
        .add("writer", json(flag.writer))
        .add("error", orNull(flag.error))
        .text();
}

}  // namespace

std::string jsonString(std::string_view text) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string quoted = "\"";
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const auto byte = static_cast<unsigned char>(c);
        const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : '\0');
        // U+0080 to U+009F control a terminal, too. In UTF-8 they begin with 0xC2.
        const bool isHighControl = byte == 0xC2 && next >= 0x80 && next < 0xA0;
        if (isHighControl) ++i;
        if (c == '"' || c == '\\') {
            quoted += {'\\', c};
        } else if (byte < ' ' || byte == 0x7F || isHighControl) {
            const unsigned char codePoint = isHighControl ? next : byte;
            quoted += {'\\', 'u', '0', '0', digits[codePoint >> 4], digits[codePoint & 0xF]};
        } else {
            quoted += c;
        }
    }
    return quoted + '"';
}

std::string statusJson(const Facts& facts) {
    const Verdict verdict = verdictOf(facts);
    return Object()
        .add("answer", json(word(verdict.answer)))
        .add("reason", json(verdict.reason))
        .add("sentence", json(verdict.sentence))
        .add("version", json(facts.version))
        .add("asker", json(facts.asker))
        .add("remote", json(facts.isRemote))
        .add("atMachine", json(facts.seat.person))
        .add("trackpads", list(facts.pads, padJson))
        .add("application", applicationJson(facts.application))
        .add("flag", flagJson(facts.flag))
        .add("service", serviceJson(facts.service))
        .text();
}

}  // namespace kovra::control
