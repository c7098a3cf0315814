#include "BLE_kovra/platform/linux/session/DBusActivation.h"

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <variant>

#include "BLE_kovra/platform/linux/bus/BusMessage.h"
#include "BLE_kovra/platform/linux/desktop/BuildBundle.h"
#include "BLE_kovra/platform/linux/desktop/XdgEnvironment.h"
#include "BLE_kovra/platform/linux/session/BusWait.h"

namespace kovra {

namespace {

constexpr const char* interface = "org.freedesktop.Application";

// The variables in which a desktop passes a token to a program that it starts, in order of preference on Wayland. Each
// is followed by the key of that token in the platform data of a call.
constexpr std::array<std::pair<const char*, const char*>, 2> tokens{
    {{"XDG_ACTIVATION_TOKEN", "activation-token"}, {"DESKTOP_STARTUP_ID", "desktop-startup-id"}}};

// Reads the next value of the message, the platform data, and stores the preferred one of its tokens in `token`.
// Returns a negative error number if the message has another signature.
int readToken(sd_bus_message* call, std::string& token) {
    std::array<std::string, tokens.size()> found;
    const int result = forEachEntry(call, "{sv}", [&](std::string_view key) {
        for (std::size_t i = 0; i < tokens.size(); ++i) {
            if (key != tokens[i].second) continue;
            const char* value = nullptr;
            const int read = sd_bus_message_read(call, "v", "s", &value);
            if (read > 0) found[i] = value;
            return read;
        }
        return 0;
    });
    token = found[0].empty() ? found[1] : found[0];
    return result;
}

constexpr std::array<std::pair<std::string_view, ApplicationAction>, 6> actions{
    {{"toggle", ApplicationAction::toggle},
     {"on", ApplicationAction::on},
     {"off", ApplicationAction::off},
     {"settings", ApplicationAction::settings},
     {"hotkey", ApplicationAction::hotKey},
     {"quit", ApplicationAction::quit}}};

// Reads the name and the parameters of an action. Returns nullopt if the message has another signature, if there is no
// such action, or if it is given a parameter.
std::optional<ApplicationAction> readAction(sd_bus_message* call) {
    const char* name = nullptr;
    if (sd_bus_message_read(call, "s", &name) <= 0) return std::nullopt;
    const auto* found = std::ranges::find(actions, std::string_view(name), [](const auto& each) { return each.first; });
    if (found == actions.end()) return std::nullopt;
    if (sd_bus_message_enter_container(call, SD_BUS_TYPE_ARRAY, "v") <= 0) return std::nullopt;
    if (sd_bus_message_at_end(call, 0) <= 0 || sd_bus_message_exit_container(call) < 0) return std::nullopt;
    return found->second;
}

struct OwnToken {
    const char* key;
    std::string token;  // empty if there is none
};

// Returns the preferred one of the tokens that this process was started with. On X that is the startup ID: some
// desktops set no other variable there, so the other one may be left from an earlier start, for example that of a
// terminal.
OwnToken ownToken() {
    auto preferred = tokens;
    if (currentDesktop() == Desktop::x11) std::ranges::reverse(preferred);
    for (const auto& [variable, key] : preferred) {
        const char* token = std::getenv(variable);
        if (token != nullptr && *token != '\0') return {key, token};
    }
    return {tokens[0].second, ""};
}

void writeOwnToken(BusWriter& message) {
    const OwnToken own = ownToken();
    message.openArray("{sv}");
    if (!own.token.empty()) message.entry(own.key, own.token);
    message.close();
}

// A call to the owner of a name, and the owner's reply. An error or a reply with another signature than this program's
// counts as refused.
struct Question {
    const char* interface;
    const char* member;
    const char* signature;  // of the reply
    enum class State { waiting, answered, refused } state = State::waiting;
    std::string text = {};  // the text in the reply, if it has one
    BusSlot reply = {};

    void ask(sd_bus* bus, const char* busName, const std::function<void(BusWriter&)>& write) {
        sd_bus_message* made = nullptr;
        int result = sd_bus_message_new_method_call(bus, &made, busName, DBusActivation::path, interface, member);
        const BusMessage message(made);
        if (result >= 0) result = sd_bus_message_set_auto_start(made, 0);
        BusWriter writer(made);
        if (result >= 0) write(writer);
        if (result >= 0) result = writer.result();
        sd_bus_slot* slot = nullptr;
        if (result >= 0) static_cast<void>(sd_bus_call_async(bus, &slot, made, replied, this, 0));
        reply.reset(slot);
    }

  private:
    static int replied(sd_bus_message* reply, void* context, sd_bus_error*) {
        auto* self = static_cast<Question*>(context);
        if (self == nullptr) return 0;
        const bool isExpected = sd_bus_message_is_method_error(reply, nullptr) == 0 &&
                                sd_bus_message_has_signature(reply, self->signature) > 0;
        self->state = isExpected ? State::answered : State::refused;
        const char* text = nullptr;
        if (isExpected && sd_bus_message_read(reply, "s", &text) > 0) self->text = text;
        return 0;
    }
};

// Returns whether this description (from Introspect) is that of an older version's object, which lacks the method
// Version. Objects of toolkits that implement org.freedesktop.Application have more methods.
bool describesOlderVersion(const std::string& object) {
    static constexpr std::string_view older =
        " <interface name=\"org.freedesktop.Application\">\n"
        "  <method name=\"Activate\">\n"
        "   <arg type=\"a{sv}\" name=\"platform_data\" direction=\"in\"/>\n"
        "  </method>\n"
        " </interface>\n";
    return object.find(older) != std::string::npos;
}

}  // namespace

void DBusActivation::exportOn(BusConnection& bus) {
    if (!activation_) activation_ = bus.exportObject(path, interface, activationTable.data(), this);
    if (!own_) own_ = bus.exportObject(path, ownInterface, ownTable.data(), this);
}

int DBusActivation::received(sd_bus_message* call, void* context, sd_bus_error* error) {
    auto* self = static_cast<DBusActivation*>(context);
    if (self == nullptr) return 0;
    std::string token;
    if (readToken(call, token) < 0) return sd_bus_error_set(error, SD_BUS_ERROR_INVALID_ARGS, "A token is a string.");
    self->queue_.async(self->lifetime_.guard([self, token = std::move(token)] { self->activated_(token); }));
    return answer(call, [](BusWriter&) {});
}

int DBusActivation::receivedAction(sd_bus_message* call, void* context, sd_bus_error* error) {
    auto* self = static_cast<DBusActivation*>(context);
    if (self == nullptr) return 0;
    const auto action = readAction(call);
    if (!action) return sd_bus_error_set(error, SD_BUS_ERROR_INVALID_ARGS, "There is no such action.");
    std::string token;
    if (readToken(call, token) < 0) return sd_bus_error_set(error, SD_BUS_ERROR_INVALID_ARGS, "A token is a string.");
    // The action may end the program, so the reply comes first.
    const int answered = answer(call, [](BusWriter&) {});
    self->queue_.async(
        self->lifetime_.guard([self, action = *action, token = std::move(token)] { self->requested_(action, token); }));
    return answered;
}

int DBusActivation::askedForVersion(sd_bus_message* call, void*, sd_bus_error*) {
    const auto version = BuildBundle().infoDictionaryValue("CFBundleShortVersionString");
    const auto* text = version ? std::get_if<std::string>(&*version) : nullptr;
    return answer(call, [&](BusWriter& reply) { reply.text(text == nullptr ? "" : *text); });
}

DBusActivation::Owner DBusActivation::activate(sd_bus* bus, const char* busName) {
    using State = Question::State;
    Question activation{interface, "Activate", ""};
    Question version{ownInterface, "Version", "s"};
    Question object{"org.freedesktop.DBus.Introspectable", "Introspect", "s"};
    activation.ask(bus, busName, writeOwnToken);
    version.ask(bus, busName, [](BusWriter&) {});
    object.ask(bus, busName, [](BusWriter&) {});
    const auto identity = [&] {
        if (version.state != State::refused) return version.state;
        if (object.state != State::answered) return object.state;
        return describesOlderVersion(object.text) ? State::answered : State::refused;
    };
    const auto isRefused = [&] { return activation.state == State::refused || identity() == State::refused; };
    const auto isOurs = [&] { return activation.state == State::answered && identity() == State::answered; };
    processUntil(bus, timeout, [&] { return isRefused() || isOurs(); });
    if (isRefused()) return Owner::foreign;
    return isOurs() ? Owner::ours : Owner::silent;
}

std::string DBusActivation::takeOwnToken() {
    OwnToken own = ownToken();
    for (const auto& [variable, key] : tokens) ::unsetenv(variable);
    return std::move(own.token);
}

const std::array<sd_bus_vtable, 4> DBusActivation::activationTable{{
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD_WITH_ARGS("Activate", SD_BUS_ARGS("a{sv}", platform_data), SD_BUS_NO_RESULT, received,
                            SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("ActivateAction", SD_BUS_ARGS("s", action_name, "av", parameter, "a{sv}", platform_data),
                            SD_BUS_NO_RESULT, receivedAction, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
}};

const std::array<sd_bus_vtable, 3> DBusActivation::ownTable{{
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD_WITH_ARGS("Version", SD_BUS_NO_ARGS, SD_BUS_RESULT("s", version), askedForVersion,
                            SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
}};

}  // namespace kovra
