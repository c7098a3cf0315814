#include "tests/fuzz/StandInBus.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "BLE_kovra/platform/Utf8.h"
#include "BLE_kovra/platform/linux/bus/BusMessage.h"
#include "tests/fuzz/Promise.h"

namespace kovra::fuzz {

namespace {

constexpr std::string_view driver = "org.freedesktop.DBus";

constexpr std::array words{"",
                           "a",
                           "toggle",
                           "on",
                           "off",
                           "settings",
                           "hotkey",
                           "quit",
                           "activation-token",
                           "desktop-startup-id",
                           "clicked",
                           "opened",
                           "label",
                           "enabled",
                           "type",
                           "toggle-state",
                           "shortcuts",
                           "session_handle",
                           "trigger_description",
                           "toggle-muting",
                           "color-scheme",
                           "org.freedesktop.appearance",
                           "/org/freedesktop/portal/desktop/session/1_1/s",
                           "Ctrl+Alt+T"};
constexpr std::array someTypes{"s",  "u",  "i",     "b",         "o",        "v",      "as",
                               "av", "ai", "a{sv}", "a(sa{sv})", "(sa{sv})", "a(isvu)"};

// Returns the length of the complete type at the start.
std::size_t lengthOfType(std::string_view types) {
    if (types.starts_with('a')) return 1 + lengthOfType(types.substr(1));
    if (!types.starts_with('(') && !types.starts_with('{')) return 1;
    int depth = 0;
    std::size_t length = 0;
    do {
        const char c = types[length++];
        depth += c == '(' || c == '{' ? 1 : 0;
        depth -= c == ')' || c == '}' ? 1 : 0;
    } while (depth > 0);
    return length;
}

bool appendContainer(sd_bus_message* message, char kind, const std::string& of, std::string_view inside,
                     FuzzedDataProvider& input) {
    return sd_bus_message_open_container(message, kind, of.c_str()) >= 0 && appendValues(message, inside, input) &&
           sd_bus_message_close_container(message) >= 0;
}

bool appendOne(sd_bus_message* message, std::string_view type, FuzzedDataProvider& input) {
    switch (type[0]) {
        case 'a': {
            const std::string of(type.substr(1));
            std::string elements;
            for (int left = input.ConsumeIntegralInRange(0, 4); left > 0; --left) elements += of;
            return appendContainer(message, SD_BUS_TYPE_ARRAY, of, elements, input);
        }
        case 'v': {
            // At the end of the input all choices are the first ones, so values do not nest without end.
            const std::string of = input.PickValueInArray(someTypes);
            return appendContainer(message, SD_BUS_TYPE_VARIANT, of, of, input);
        }
        case '(':
        case '{': {
            const std::string of(type.substr(1, type.size() - 2));
            const char kind = type[0] == '(' ? SD_BUS_TYPE_STRUCT : SD_BUS_TYPE_DICT_ENTRY;
            return appendContainer(message, kind, of, of, input);
        }
        case 's':
            return sd_bus_message_append_basic(message, 's', wordFrom(input).c_str()) >= 0;
        case 'o':
            return sd_bus_message_append_basic(message, 'o', input.ConsumeBool() ? words[22] : "/") >= 0;
        case 'b': {
            const int value = input.ConsumeBool() ? 1 : 0;
            return sd_bus_message_append_basic(message, 'b', &value) >= 0;
        }
        case 'u':
        case 'i': {
            const std::uint32_t value = input.ConsumeBool() ? input.ConsumeIntegralInRange<std::uint32_t>(0, 9)
                                                            : input.ConsumeIntegral<std::uint32_t>();
            return sd_bus_message_append_basic(message, type[0], &value) >= 0;
        }
        case 't': {
            const auto value = input.ConsumeIntegral<std::uint64_t>();
            return sd_bus_message_append_basic(message, 't', &value) >= 0;
        }
        default:
            return false;
    }
}

}  // namespace

StandInBus::StandInBus() {
    const int listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string name = "kovra-fuzz-bus-" + std::to_string(::getpid());
    std::memcpy(address.sun_path + 1, name.data(), name.size());
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
    promise(::bind(listener, reinterpret_cast<const sockaddr*>(&address), length) == 0 && ::listen(listener, 1) == 0,
            "the bus has an address");
    ::setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:abstract=" + name).c_str(), 1);
    session_.emplace(loop_);
    const int connection = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    ::close(listener);

    sd_bus* made = nullptr;
    sd_bus_new(&made);
    bus_.reset(made);
    sd_id128_t identity{};
    const bool isStarted = sd_bus_set_fd(made, connection, connection) >= 0 &&
                           sd_bus_set_server(made, 1, identity) >= 0 && sd_bus_set_anonymous(made, 1) >= 0 &&
                           sd_bus_set_trusted(made, 1) >= 0 && sd_bus_add_filter(made, nullptr, received, this) >= 0 &&
                           sd_bus_start(made) >= 0 && sd_bus_attach_event(made, loop_.event(), 0) >= 0;
    promise(isStarted, "the bus has started");
    bool isConnected = false;
    const BusToken listening = session_->listen([&](BusConnection*) { isConnected = true; });
    loop_.runUntil([&] { return isConnected; });
}

// The client answers a Ping after it has received everything before. Then its queued blocks run. What they send is
// answered before the answer to the next Ping.
void StandInBus::settle() {
    for (unsigned before = calls_ + 1; before != calls_;) {
        before = calls_;
        bool isAnswered = false;
        sd_bus_slot* slot = nullptr;
        const auto note = [](sd_bus_message*, void* context, sd_bus_error*) {
            *static_cast<bool*>(context) = true;
            return 0;
        };
        const int sent = sd_bus_call_method_async(bus_.get(), &slot, nullptr, "/", "org.freedesktop.DBus.Peer", "Ping",
                                                  note, &isAnswered, nullptr);
        const BusSlot pending(slot);
        promise(sent >= 0, "the client is there");
        loop_.runUntil([&] { return isAnswered; });
        bool hasTurned = false;
        loop_.async([&] { hasTurned = true; });
        loop_.runUntil([&] { return hasTurned; });
    }
}

bool StandInBus::send(sd_bus_message* message, const char* sender) {
    return sd_bus_message_set_sender(message, sender) >= 0 && sd_bus_send(bus_.get(), message, nullptr) >= 0;
}

int StandInBus::received(sd_bus_message* message, void* context, sd_bus_error*) {
    auto* self = static_cast<StandInBus*>(context);
    std::uint8_t type = 0;
    sd_bus_message_get_type(message, &type);
    if (type != SD_BUS_MESSAGE_METHOD_CALL) return 0;
    ++self->calls_;
    const char* destination = sd_bus_message_get_destination(message);
    if (destination != nullptr && destination == driver)
        self->answer(message);
    else if (self->called)
        self->called(message);
    else
        sd_bus_reply_method_errorf(message, SD_BUS_ERROR_SERVICE_UNKNOWN, "nobody");
    return 1;
}

void StandInBus::answer(sd_bus_message* call) {
    const std::string_view member = sd_bus_message_get_member(call);
    const bool asksForName = member == "Hello" || member == "GetNameOwner";
    if (asksForName)
        sd_bus_reply_method_return(call, "s", member == "Hello" ? client : service);
    else if (member == "RequestName")
        sd_bus_reply_method_return(call, "u", 1U);
    else
        sd_bus_reply_method_return(call, "");
}

bool appendValues(sd_bus_message* message, std::string_view types, FuzzedDataProvider& input) {
    while (!types.empty()) {
        const std::size_t length = lengthOfType(types);
        if (!appendOne(message, types.substr(0, length), input)) return false;
        types.remove_prefix(length);
    }
    return true;
}

std::string appendPerhaps(sd_bus_message* message, const std::string& types, FuzzedDataProvider& input) {
    std::string chosen = types;
    if (input.ConsumeIntegralInRange(0, 9) == 9) {
        chosen.clear();
        for (int left = input.ConsumeIntegralInRange(0, 3); left > 0; --left)
            chosen += input.PickValueInArray(someTypes);
    }
    return appendValues(message, chosen, input) ? chosen : "";
}

std::string wordFrom(FuzzedDataProvider& input) {
    if (!input.ConsumeBool()) return input.PickValueInArray(words);
    std::string text = validUtf8(input.ConsumeRandomLengthString(30));
    std::erase(text, '\0');
    return text;
}

}  // namespace kovra::fuzz
