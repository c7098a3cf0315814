#include "BLE_kovra/platform/linux/hotkeys/PortalShortcut.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

#include "BLE_kovra/platform/linux/hotkeys/AcceleratorName.h"
#include "BLE_kovra/platform/linux/session/SingleInstance.h"

namespace kovra {

namespace {

constexpr const char* portal = "org.freedesktop.portal.Desktop";
constexpr const char* portalPath = "/org/freedesktop/portal/desktop";
constexpr const char* globalShortcuts = "org.freedesktop.portal.GlobalShortcuts";

// Some desktops report a held key repeatedly, as the keyboard repeats it. A report that follows another one within this
// time is such a repetition. The time is longer than the keyboard's usual delay before the first repetition.
constexpr auto repetition = std::chrono::seconds(1);

// Reads the code of the response. Returns whether it is 0. Any other code means that the user or the portal has ended
// the request.
bool isGranted(sd_bus_message* response) {
    std::uint32_t code = 1;
    return sd_bus_message_read(response, "u", &code) > 0 && code == 0;
}

// What the portal says about the shortcut.
struct Listing {
    bool isListed = false;
    std::optional<std::string> combination;  // in the desktop's own words; empty if it does not tell; none without key

    HotKeyState::Holder holder() const { return combination ? HotKeyState::Holder::us : HotKeyState::Holder::refused; }
};

// Reads the next value of the message, an a(sa{sv}), and sets `listing` to what it says about the shortcut with this
// id. Returns a negative error number if the message has a different signature.
int readListing(sd_bus_message* message, std::string_view id, Listing& listing) {
    int result = sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, "(sa{sv})");
    while (result > 0 && (result = sd_bus_message_enter_container(message, SD_BUS_TYPE_STRUCT, "sa{sv}")) > 0) {
        const char* listed = nullptr;
        result = sd_bus_message_read(message, "s", &listed);
        if (result > 0 && listed == id) {
            const char* combination = nullptr;
            result = forEachEntry(message, "{sv}", [&](std::string_view key) {
                return key == "trigger_description" ? sd_bus_message_read(message, "v", "s", &combination) : 0;
            });
            const bool isUnassigned = combination != nullptr && *combination == '\0';
            listing.isListed = result > 0;
            if (result > 0 && !isUnassigned) listing.combination = combination == nullptr ? "" : combination;
        } else if (result > 0) {
            result = sd_bus_message_skip(message, "a{sv}");
        }
        if (result >= 0) result = sd_bus_message_exit_container(message);
    }
    return result < 0 ? result : sd_bus_message_exit_container(message);
}

// Reads the results of a response, an a{sv}.
Listing readResults(sd_bus_message* response, std::string_view id) {
    Listing listing;
    forEachEntry(response, "{sv}", [&](std::string_view key) {
        if (key != "shortcuts") return 0;
        int result = sd_bus_message_enter_container(response, SD_BUS_TYPE_VARIANT, "a(sa{sv})");
        if (result > 0) result = readListing(response, id, listing);
        if (result >= 0) result = sd_bus_message_exit_container(response);
        return result < 0 ? result : 1;
    });
    return listing;
}

}  // namespace

PortalShortcut::PortalShortcut(SessionBus& bus, Description description, std::function<void()> pressed,
                               std::function<void(HotKeyState)> changed)
    : description_(std::move(description)),
      pressed_(std::move(pressed)),
      changed_(std::move(changed)),
      listening_(bus.listen([this](BusConnection* connection) { busChanged(connection); })) {}

PortalShortcut::~PortalShortcut() { closeSession(); }

void PortalShortcut::request() {
    if (!mayBeRequested_ || isAsking_) return;
    if (session_.empty() || wasBound_) {
        closeSession();
        endSession();
        isAsking_ = true;
        return createSession();
    }
    isAsking_ = true;
    bindShortcut();
}

void PortalShortcut::busChanged(BusConnection* bus) {
    bus_ = bus;
    if (bus == nullptr) {
        owner_.reset();
        refuse();
        return;
    }
    owner_ =
        bus->watchOwner(portal, [this](std::string_view before, std::string_view now) { ownerChanged(before, now); });
    registerApplication();
}

void PortalShortcut::registerApplication() {
    isRegistered_ = true;
    // Without this call, the portal would identify a program started from a terminal as the terminal. Older portals do
    // not have this method; the error that they return is ignored.
    reply_ = bus_->call(
        {portal, portalPath, "org.freedesktop.host.portal.Registry", "Register", true},
        [](BusWriter& arguments) { arguments.text(SingleInstance::busName).openArray("{sv}").close(); },
        [this](sd_bus_message*) { createSession(); });
}

void PortalShortcut::createSession() {
    const std::string request = newRequest(&PortalShortcut::sessionCreated);
    call("CreateSession", [&](BusWriter& arguments) {
        arguments.openArray("{sv}").entry("handle_token", request).entry("session_handle_token", request);
        // Plasma 5.27 gives keys only to the shortcuts of this option, and opens no dialog. Other portals ignore it.
        arguments.openEntry("sv").text("shortcuts").openVariant("a(sa{sv})");
        describe(arguments);
        arguments.close().close().close();
    });
}

// The portal passes the session handle as a string, although it is an object path.
void PortalShortcut::sessionCreated(sd_bus_message* response) {
    session_ = isGranted(response) ? readText(response, "session_handle").value_or("") : "";
    if (sd_bus_object_path_is_valid(session_.c_str()) <= 0) return fail();
    activated_ = subscribe(portalPath, globalShortcuts, "Activated", &PortalShortcut::activated);
    deactivated_ = subscribe(portalPath, globalShortcuts, "Deactivated", &PortalShortcut::deactivated);
    shortcutsChanged_ = subscribe(portalPath, globalShortcuts, "ShortcutsChanged", &PortalShortcut::shortcutsChanged);
    closed_ = subscribe(session_, "org.freedesktop.portal.Session", "Closed", &PortalShortcut::sessionClosed);
    listShortcuts();
}

void PortalShortcut::listShortcuts() {
    const std::string request = newRequest(&PortalShortcut::shortcutsListed);
    call("ListShortcuts", [&](BusWriter& arguments) {
        arguments.path(session_.c_str()).openArray("{sv}").entry("handle_token", request).close();
    });
}

void PortalShortcut::shortcutsListed(sd_bus_message* response) {
    const Listing found = isGranted(response) ? readResults(response, description_.id) : Listing{};
    // Some desktops show a dialog for each binding, also for a shortcut that has a key.
    if (isAsking_ && !found.combination) return bindShortcut();
    isAsking_ = false;
    response_.reset();
    if (!found.isListed) return report(HotKeyState::Holder::unrequested);
    report(found.holder(), found.combination.value_or(""));
}

void PortalShortcut::bindShortcut() {
    wasBound_ = true;
    const std::string request = newRequest(&PortalShortcut::shortcutBound);
    call("BindShortcuts", [&](BusWriter& arguments) {
        arguments.path(session_.c_str());
        describe(arguments);
        constexpr const char* noWindow = "";
        arguments.text(noWindow).openArray("{sv}").entry("handle_token", request).close();
    });
}

void PortalShortcut::describe(BusWriter& arguments) const {
    arguments.openArray("(sa{sv})").openStruct("sa{sv}").text(description_.id).openArray("{sv}");
    arguments.entry("description", description_.text).entry("preferred_trigger", description_.trigger);
    arguments.close().close().close();
}

// GNOME 48 responds with the code of a failure also if the user has agreed. Only the list of shortcuts differs.
void PortalShortcut::shortcutBound(sd_bus_message* response) {
    isAsking_ = false;
    response_.reset();
    isGranted(response);
    const Listing found = readResults(response, description_.id);
    report(found.holder(), found.combination.value_or(""));
}

void PortalShortcut::shortcutsChanged(sd_bus_message* message) {
    const char* session = nullptr;
    if (sd_bus_message_read(message, "o", &session) <= 0 || session != session_) return;
    Listing listing;
    if (readListing(message, description_.id, listing) < 0) return;
    report(listing.holder(), listing.combination.value_or(""));
}

// Some desktops close the session when the user closes the dialog.
void PortalShortcut::sessionClosed(sd_bus_message*) {
    endSession();
    report(HotKeyState::Holder::refused);
}

void PortalShortcut::activated(sd_bus_message* message) {
    if (!isOurs(message)) return;
    const auto now = std::chrono::steady_clock::now();
    const auto before = std::exchange(activeSince_, now);
    if (before && now - *before < repetition) return;
    const auto pressed = pressed_;  // the function may destroy this object
    pressed();
}

void PortalShortcut::deactivated(sd_bus_message* message) {
    if (isOurs(message)) activeSince_.reset();
}

bool PortalShortcut::isOurs(sd_bus_message* message) const {
    const char* session = nullptr;
    const char* id = nullptr;
    return sd_bus_message_read(message, "os", &session, &id) > 0 && session == session_ && id == description_.id;
}

void PortalShortcut::ownerChanged(std::string_view before, std::string_view now) {
    if (!before.empty()) refuse();
    // If the bus started the portal because of the first step, do not repeat that step.
    if (!now.empty() && !isRegistered_) registerApplication();
}

void PortalShortcut::report(HotKeyState::Holder holder, std::string combination) {
    if (const auto name = acceleratorName(combination)) combination = isRequested(*name) ? "" : *name;
    HotKeyState state{holder, std::move(combination)};
    mayBeRequested_ = state.mayBeRequested();
    const auto changed = changed_;  // the function may destroy this object
    changed(std::move(state));
}

bool PortalShortcut::isRequested(const std::string& combination) const {
    const auto isSame = [](char one, char other) { return std::toupper(one) == std::toupper(other); };
    return std::equal(combination.begin(), combination.end(), description_.trigger.begin(), description_.trigger.end(),
                      isSame);
}

void PortalShortcut::refuse() {
    isRegistered_ = false;
    endSession();
    report(HotKeyState::Holder::nobody);
}

void PortalShortcut::fail() {
    if (!isAsking_) return refuse();
    closeSession();
    endSession();
    report(HotKeyState::Holder::refused);
}

void PortalShortcut::closeSession() {
    if (bus_ == nullptr || session_.empty()) return;
    bus_->send({portal, session_.c_str(), "org.freedesktop.portal.Session", "Close", true}, [](BusWriter&) {});
}

void PortalShortcut::endSession() {
    isAsking_ = wasBound_ = false;
    session_.clear();
    activeSince_.reset();
    for (BusToken* token : {&reply_, &response_, &activated_, &deactivated_, &shortcutsChanged_, &closed_})
        token->reset();
}

std::string PortalShortcut::newRequest(Step next) {
    std::string token = "ble_kovra_" + std::to_string(++requests_);
    const char* name = nullptr;
    sd_bus_get_unique_name(bus_->bus(), &name);
    std::string sender = name == nullptr ? "" : name + 1;  // without the colon
    std::replace(sender.begin(), sender.end(), '.', '_');
    // Subscribe before the call, since the response may arrive before the reply.
    response_ = subscribe(std::string(portalPath) + "/request/" + sender + "/" + token,
                          "org.freedesktop.portal.Request", "Response", next);
    return token;
}

BusToken PortalShortcut::subscribe(const std::string& path, const char* interface, const char* signal, Step next) {
    return bus_->receive({portal, path, interface, signal},
                         [this, next](sd_bus_message* message) { (this->*next)(message); });
}

void PortalShortcut::call(const char* method, const BusConnection::Write& write) {
    reply_ = bus_->call({portal, portalPath, globalShortcuts, method, true}, write, [this](sd_bus_message* answer) {
        if (sd_bus_message_is_method_error(answer, nullptr) > 0) fail();
    });
    if (!reply_) refuse();
}

}  // namespace kovra
