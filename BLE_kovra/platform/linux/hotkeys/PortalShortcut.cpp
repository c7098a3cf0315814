#include "BLE_kovra/platform/linux/hotkeys/PortalShortcut.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>

#include "BLE_kovra/platform/linux/session/SingleInstance.h"

namespace kovra {

namespace {

constexpr const char* portal = "org.freedesktop.portal.Desktop";
constexpr const char* portalPath = "/org/freedesktop/portal/desktop";
constexpr const char* globalShortcuts = "org.freedesktop.portal.GlobalShortcuts";

// Some desktops tell of a held key again and again, as the keyboard repeats it; the pause before the first repetition
// is the longest.
constexpr auto repetition = std::chrono::seconds(1);

// 0 is success; the others mean that the user or the portal has ended the request.
bool isGranted(sd_bus_message* response) {
    std::uint32_t code = 1;
    return sd_bus_message_read(response, "u", &code) > 0 && code == 0;
}

// The entry of an a{sv} that comes next in the message, if it has one of this name that is a string; the published
// interface has this for the session, and not an object path.
std::string stringFrom(sd_bus_message* message, std::string_view name) {
    std::string found;
    if (sd_bus_message_enter_container(message, 'a', "{sv}") <= 0) return found;
    while (sd_bus_message_enter_container(message, 'e', "sv") > 0) {
        const char* key = nullptr;
        const char* value = nullptr;
        if (sd_bus_message_read(message, "s", &key) <= 0) return found;
        if (key == name && sd_bus_message_read(message, "v", "s", &value) > 0) return value;
        if (sd_bus_message_skip(message, "v") < 0 || sd_bus_message_exit_container(message) < 0) return found;
    }
    return found;
}

// Whether the entry "shortcuts" of an a{sv} that comes next in the message has one of this name.
bool listsShortcut(sd_bus_message* message, std::string_view id) {
    if (sd_bus_message_enter_container(message, 'a', "{sv}") <= 0) return false;
    while (sd_bus_message_enter_container(message, 'e', "sv") > 0) {
        const char* key = nullptr;
        if (sd_bus_message_read(message, "s", &key) <= 0) return false;
        if (std::string_view(key) == "shortcuts") {
            if (sd_bus_message_enter_container(message, 'v', "a(sa{sv})") <= 0) return false;
            if (sd_bus_message_enter_container(message, 'a', "(sa{sv})") <= 0) return false;
            while (sd_bus_message_enter_container(message, 'r', "sa{sv}") > 0) {
                const char* listed = nullptr;
                if (sd_bus_message_read(message, "s", &listed) <= 0) return false;
                if (listed == id) return true;
                if (sd_bus_message_skip(message, "a{sv}") < 0 || sd_bus_message_exit_container(message) < 0)
                    return false;
            }
            return false;
        }
        if (sd_bus_message_skip(message, "v") < 0 || sd_bus_message_exit_container(message) < 0) return false;
    }
    return false;
}

}  // namespace

PortalShortcut::PortalShortcut(SessionBus& bus, Wish wish, std::function<void()> pressed)
    : bus_(bus),
      wish_(std::move(wish)),
      pressed_(std::move(pressed)),
      listener_(bus.listen(
          [this](sd_bus*) {
              watchOwner();
              introduce();
          },
          [this] {
              owner_.reset();
              forget();
          })),
      self_(std::make_shared<PortalShortcut*>(this)) {}

PortalShortcut::~PortalShortcut() {
    if (bus_.bus() == nullptr || session_.empty()) return;
    sd_bus_call_method_async(bus_.bus(), nullptr, portal, session_.c_str(), "org.freedesktop.portal.Session", "Close",
                             nullptr, nullptr, "");
}

void PortalShortcut::watchOwner() {
    // Of this name alone: others come and go all day.
    const std::string rule = std::string("type='signal',sender='org.freedesktop.DBus',path='/org/freedesktop/DBus',") +
                             "interface='org.freedesktop.DBus',member='NameOwnerChanged',arg0='" + portal + "'";
    sd_bus_slot* slot = nullptr;
    sd_bus_add_match_async(bus_.bus(), &slot, rule.c_str(), ring<&PortalShortcut::ownerChanged>, nullptr, this);
    owner_.reset(slot);
}

void PortalShortcut::introduce() {
    isAsking_ = true;
    // Else the portal takes a program that was started from a terminal for the terminal. Older ones do not know this.
    sd_bus_slot* slot = nullptr;
    sd_bus_call_method_async(bus_.bus(), &slot, portal, portalPath, "org.freedesktop.host.portal.Registry", "Register",
                             ring<&PortalShortcut::introduced>, this, "sa{sv}", SingleInstance::busName, 0);
    reply_.reset(slot);
}

void PortalShortcut::introduced(sd_bus_message*) { createSession(); }

void PortalShortcut::createSession() {
    const std::string request = newRequest<&PortalShortcut::sessionCreated>();
    call(globalShortcuts, "CreateSession", "a{sv}", 2, "handle_token", "s", request.c_str(), "session_handle_token",
         "s", request.c_str());
}

void PortalShortcut::sessionCreated(sd_bus_message* response) {
    std::string session = isGranted(response) ? stringFrom(response, "session_handle") : "";
    if (sd_bus_object_path_is_valid(session.c_str()) <= 0) return forget();
    session_ = std::move(session);
    activated_ = listenTo<&PortalShortcut::activated>(portalPath, globalShortcuts, "Activated");
    deactivated_ = listenTo<&PortalShortcut::deactivated>(portalPath, globalShortcuts, "Deactivated");
    closed_ = listenTo<&PortalShortcut::sessionClosed>(session_, "org.freedesktop.portal.Session", "Closed");
    listShortcuts();
}

void PortalShortcut::listShortcuts() {
    const std::string request = newRequest<&PortalShortcut::shortcutsListed>();
    call(globalShortcuts, "ListShortcuts", "oa{sv}", session_.c_str(), 1, "handle_token", "s", request.c_str());
}

void PortalShortcut::shortcutsListed(sd_bus_message* response) {
    // Asked for only where the desktop has forgotten it: some show a dialog each time.
    if (!isGranted(response) || !listsShortcut(response, wish_.id)) bindShortcut();
}

void PortalShortcut::bindShortcut() {
    const std::string request = newRequest<&PortalShortcut::shortcutBound>();
    constexpr const char* noWindow = "";
    call(globalShortcuts, "BindShortcuts", "oa(sa{sv})sa{sv}", session_.c_str(), 1, wish_.id.c_str(), 2, "description",
         "s", wish_.description.c_str(), "preferred_trigger", "s", wish_.trigger.c_str(), noWindow, 1, "handle_token",
         "s", request.c_str());
}

void PortalShortcut::shortcutBound(sd_bus_message*) { response_.reset(); }

void PortalShortcut::answered(sd_bus_message* message) {
    if (sd_bus_message_is_method_error(message, nullptr) > 0) forget();
}

void PortalShortcut::activated(sd_bus_message* message) {
    if (!isOurs(message)) return;
    const auto now = std::chrono::steady_clock::now();
    const auto before = std::exchange(activeSince_, now);
    if (before && now - *before < repetition) return;
    const auto pressed = pressed_;  // which may let go of this
    pressed();
}

void PortalShortcut::deactivated(sd_bus_message* message) {
    if (isOurs(message)) activeSince_.reset();
}

bool PortalShortcut::isOurs(sd_bus_message* message) const {
    const char* session = nullptr;
    const char* id = nullptr;
    return sd_bus_message_read(message, "os", &session, &id) > 0 && session == session_ && id == wish_.id;
}

void PortalShortcut::sessionClosed(sd_bus_message*) { forget(); }

void PortalShortcut::ownerChanged(sd_bus_message* message) {
    const char* name = nullptr;
    const char* before = nullptr;
    const char* now = nullptr;
    if (sd_bus_message_read(message, "sss", &name, &before, &now) <= 0) return;
    if (*before != '\0') forget();
    // The portal may also have come because it was asked.
    if (*now != '\0' && !isAsking_) introduce();
}

void PortalShortcut::forget() {
    isAsking_ = false;
    session_.clear();
    activeSince_.reset();
    for (BusSlot* slot : {&reply_, &response_, &activated_, &deactivated_, &closed_}) slot->reset();
}

template <PortalShortcut::Heard heard>
std::string PortalShortcut::newRequest() {
    std::string token = "ble_kovra_" + std::to_string(++requests_);
    const char* name = nullptr;
    sd_bus_get_unique_name(bus_.bus(), &name);
    std::string sender = name == nullptr ? "" : name + 1;  // without its colon
    std::replace(sender.begin(), sender.end(), '.', '_');
    // Before the call, since the answer may come at once.
    response_ = listenTo<heard>(std::string(portalPath) + "/request/" + sender + "/" + token,
                                "org.freedesktop.portal.Request", "Response");
    return token;
}

template <PortalShortcut::Heard heard>
BusSlot PortalShortcut::listenTo(const std::string& path, const char* interface, const char* signal) {
    sd_bus_slot* slot = nullptr;
    sd_bus_match_signal_async(bus_.bus(), &slot, portal, path.c_str(), interface, signal, ring<heard>, nullptr, this);
    return BusSlot(slot);
}

template <PortalShortcut::Heard heard>
int PortalShortcut::ring(sd_bus_message* message, void* context, sd_bus_error*) {
    auto* shortcut = static_cast<PortalShortcut*>(context);
    if (shortcut == nullptr) return 0;
    const std::shared_ptr<sd_bus_message> kept(sd_bus_message_ref(message), sd_bus_message_unref);
    shortcut->bus_.loop().async([weak = std::weak_ptr(shortcut->self_), kept] {
        if (const auto self = weak.lock()) ((*self)->*heard)(kept.get());
    });
    return 0;
}

template <typename... Values>
void PortalShortcut::call(const char* interface, const char* method, const char* types, Values... values) {
    sd_bus_slot* slot = nullptr;
    const int result = sd_bus_call_method_async(bus_.bus(), &slot, portal, portalPath, interface, method,
                                                ring<&PortalShortcut::answered>, this, types, values...);
    reply_.reset(slot);
    if (result < 0) forget();
}

}  // namespace kovra
