#include <fuzzer/FuzzedDataProvider.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "BLE_kovra/platform/linux/hotkeys/PortalShortcut.h"
#include "BLE_kovra/platform/linux/theme/PortalColorScheme.h"
#include "tests/fuzz/Promise.h"
#include "tests/fuzz/StandInBus.h"

// Replies and signals of a portal that may send anything, and of a stranger who pretends to be the portal.

namespace {

using namespace kovra;

constexpr const char* driver = "org.freedesktop.DBus";
constexpr const char* portalPath = "/org/freedesktop/portal/desktop";
constexpr const char* shortcuts = "org.freedesktop.portal.GlobalShortcuts";
constexpr const char* requestInterface = "org.freedesktop.portal.Request";
constexpr const char* sessionInterface = "org.freedesktop.portal.Session";
constexpr const char* settings = "org.freedesktop.portal.Settings";
const std::string session = "/org/freedesktop/portal/desktop/session/1_1/s";

class Portal {
  public:
    Portal(fuzz::StandInBus& bus, FuzzedDataProvider& input) : bus_(bus), input_(input) {
        bus_.called = [this](sd_bus_message* call) { answer(call); };
    }
    ~Portal() { bus_.called = nullptr; }
    Portal(const Portal&) = delete;
    Portal& operator=(const Portal&) = delete;

    // Sends a signal with these types or others, from the portal or from the stranger.
    void emit(const std::string& path, const char* interface, const char* member, const std::string& types,
              const char* sender = fuzz::StandInBus::service) {
        sd_bus_message* made = nullptr;
        if (sd_bus_message_new_signal(bus_.bus(), &made, path.c_str(), interface, member) < 0) return;
        const BusMessage signal(made);
        fuzz::appendPerhaps(made, types, input_);
        bus_.send(made, sender);
    }
    // The key is pressed.
    void activate(const char* sender) {
        sd_bus_message* made = nullptr;
        sd_bus_message_new_signal(bus_.bus(), &made, portalPath, shortcuts, "Activated");
        const BusMessage signal(made);
        sd_bus_message_append(made, "osta{sv}", session.c_str(), "toggle-muting", std::uint64_t{1}, 0);
        bus_.send(made, sender);
    }

    // The portal ends, and is started again.
    void restart() {
        for (const bool isStart : {false, true}) {
            sd_bus_message* made = nullptr;
            sd_bus_message_new_signal(bus_.bus(), &made, "/org/freedesktop/DBus", driver, "NameOwnerChanged");
            const BusMessage signal(made);
            sd_bus_message_append(made, "sss", "org.freedesktop.portal.Desktop",
                                  isStart ? "" : fuzz::StandInBus::service, isStart ? fuzz::StandInBus::service : "");
            bus_.send(made, driver);
        }
    }

    int binds = 0, calls = 0;

  private:
    void answer(sd_bus_message* call) {
        const std::string_view member = sd_bus_message_get_member(call);
        ++calls;
        binds += member == "BindShortcuts" ? 1 : 0;
        const std::string path = pathOfRequest(call, member);
        const int kind = input_.ConsumeIntegralInRange(0, 3);
        if (kind == 3) {
            sd_bus_reply_method_errorf(call, SD_BUS_ERROR_FAILED, "%s", "refused");
            return;
        }
        sd_bus_message* made = nullptr;
        sd_bus_message_new_method_return(call, &made);
        const BusMessage reply(made);
        fuzz::appendPerhaps(made, member == "Read" ? "v" : "o", input_);
        bus_.send(made, fuzz::StandInBus::service);
        if (!path.empty()) respond(path, member, kind);
    }

    // Returns the path of the request that the call begins; empty if it begins none.
    std::string pathOfRequest(sd_bus_message* call, std::string_view member) {
        if (member != "CreateSession" && member != "ListShortcuts" && member != "BindShortcuts") return "";
        // The client numbers its requests, and each call begins the next one.
        const char* text = nullptr;
        if (member != "CreateSession") sd_bus_message_skip(call, "o");
        if (member == "BindShortcuts") sd_bus_message_skip(call, "a(sa{sv})s");
        if (sd_bus_message_enter_container(call, 'a', "{sv}") <= 0 ||
            sd_bus_message_enter_container(call, 'e', "sv") <= 0 || sd_bus_message_skip(call, "s") < 0 ||
            sd_bus_message_read(call, "v", "s", &text) <= 0)
            return "";
        return std::string(portalPath) + "/request/1_1/" + text;
    }

    void respond(const std::string& path, std::string_view member, int kind) {
        if (kind == 0) return emit(path, requestInterface, "Response", "ua{sv}");
        sd_bus_message* made = nullptr;
        sd_bus_message_new_signal(bus_.bus(), &made, path.c_str(), requestInterface, "Response");
        const BusMessage signal(made);
        if (member == "CreateSession") {
            sd_bus_message_append(made, "ua{sv}", 0U, 1, "session_handle", "s", session.c_str());
        } else {
            sd_bus_message_append(made, "u", 0U);
            sd_bus_message_open_container(made, 'a', "{sv}");
            sd_bus_message_open_container(made, 'e', "sv");
            sd_bus_message_append(made, "s", "shortcuts");
            sd_bus_message_open_container(made, 'v', "a(sa{sv})");
            fuzz::appendValues(made, "a(sa{sv})", input_);
            for (int i = 0; i < 3; ++i) sd_bus_message_close_container(made);
        }
        bus_.send(made, kind == 1 ? fuzz::StandInBus::service : fuzz::StandInBus::stranger);
    }

    fuzz::StandInBus& bus_;
    FuzzedDataProvider& input_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static fuzz::StandInBus bus;
    FuzzedDataProvider input(data, size);
    Portal portal(bus, input);
    int pressed = 0, presses = 0, requests = 0, restarts = 0;
    std::optional<HotKeyState> state;
    PortalShortcut shortcut(
        bus.session(), {"toggle-muting", "Mute or unmute the trackpad", "CTRL+ALT+t"}, [&] { ++pressed; },
        [&](HotKeyState now) { state = std::move(now); });
    int tones = 0;
    const PortalColorScheme scheme(bus.session(), [&](std::optional<PanelTone>) { ++tones; });
    bus.settle();

    constexpr int most = 8;
    int events = 0;
    for (; events < most && input.remaining_bytes() > 0; ++events) {
        const char* sender = input.ConsumeBool() ? fuzz::StandInBus::service : fuzz::StandInBus::stranger;
        const int before = pressed;
        const auto stateBefore = state;
        const bool isForged = sender == fuzz::StandInBus::stranger;
        bool isSignal = true;
        switch (input.ConsumeIntegralInRange(0, 7)) {
            case 0:
                presses += isForged ? 0 : 1;
                portal.activate(sender);
                break;
            case 1:
                presses += isForged ? 0 : 1;
                portal.emit(portalPath, shortcuts, "Activated", "osta{sv}", sender);
                break;
            case 2:
                portal.emit(portalPath, shortcuts, "Deactivated", "osta{sv}", sender);
                break;
            case 3:
                portal.emit(portalPath, shortcuts, "ShortcutsChanged", "oa(sa{sv})", sender);
                break;
            case 4:
                portal.emit(session, sessionInterface, "Closed", "", sender);
                break;
            case 5:
                portal.emit(portalPath, settings, "SettingChanged", "ssv", sender);
                break;
            case 6:
                isSignal = false;
                ++restarts;
                portal.restart();
                break;
            default:
                isSignal = false;
                ++requests;
                shortcut.request();
        }
        bus.settle();
        fuzz::promise(!isSignal || !isForged || (pressed == before && state == stateBefore), "nobody else is believed");
    }
    fuzz::promise(pressed <= presses, "only the portal's signal is a press");
    fuzz::promise(portal.binds <= requests, "no dialog opens unless the user asks for the key");
    fuzz::promise(portal.calls <= 8 + 4 * (requests + restarts), "the portal is asked a few times");
    fuzz::promise(!state || state->combination.empty() || state->holder == HotKeyState::Holder::us,
                  "only a hot key of ours has a combination");
    fuzz::promise(tones <= events + 1, "each change of the color has its message");
    return 0;
}
