#include "BLE_kovra/platform/linux/control/RunningApplication.h"

#include <cstdlib>
#include <cstring>
#include <optional>
#include <string_view>

#include "BLE_kovra/platform/linux/control/People.h"
#include "BLE_kovra/platform/linux/control/Question.h"
#include "BLE_kovra/platform/linux/session/DBusActivation.h"
#include "BLE_kovra/platform/linux/session/SingleInstance.h"

namespace kovra::control {

namespace {

using Contact = Application::Contact;

constexpr const char* name = SingleInstance::busName;
constexpr const char* bus = "org.freedesktop.DBus";

// Returns whether the error means that no program owns the name.
bool meansAbsent(const BusReply& reply) {
    return reply.error == SD_BUS_ERROR_SERVICE_UNKNOWN || reply.error == SD_BUS_ERROR_NAME_HAS_NO_OWNER;
}

BusReply ask(sd_bus* session, const char* member) {
    return control::ask(session, name, DBusActivation::path, DBusActivation::ownInterface, member, [](BusWriter&) {});
}

int readTextTo(sd_bus_message* message, std::string& text) {
    const char* value = nullptr;
    const int result = sd_bus_message_read(message, "v", "s", &value);
    if (result > 0) text = value;
    return result;
}

int readBooleanTo(sd_bus_message* message, bool& boolean) {
    int value = 0;
    const int result = sd_bus_message_read(message, "v", "b", &value);
    if (result > 0) boolean = value != 0;
    return result;
}

int readFailures(sd_bus_message* message, std::vector<std::string>& failures) {
    int result = sd_bus_message_enter_container(message, SD_BUS_TYPE_VARIANT, "as");
    if (result > 0) result = sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, "s");
    const char* failure = nullptr;
    while (result > 0 && (result = sd_bus_message_read(message, "s", &failure)) > 0) failures.emplace_back(failure);
    if (result >= 0) result = sd_bus_message_exit_container(message);
    if (result >= 0) result = sd_bus_message_exit_container(message);
    return result < 0 ? result : 1;
}

ChosenDevice::Presence presenceOf(std::string_view word) {
    if (word == "connected") return ChosenDevice::Presence::connected;
    return word == "inGrace" ? ChosenDevice::Presence::inGrace : ChosenDevice::Presence::away;
}

int readChosen(sd_bus_message* message, std::vector<ChosenDevice>& chosen) {
    int result = sd_bus_message_enter_container(message, SD_BUS_TYPE_VARIANT, "a(ss)");
    if (result > 0) result = sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, "(ss)");
    const char* device = nullptr;
    const char* presence = nullptr;
    while (result > 0 && (result = sd_bus_message_read(message, "(ss)", &device, &presence)) > 0)
        chosen.push_back({device, presenceOf(presence)});
    if (result >= 0) result = sd_bus_message_exit_container(message);
    if (result >= 0) result = sd_bus_message_exit_container(message);
    return result < 0 ? result : 1;
}

Application::HotKey hotKeyOf(std::string_view word) {
    if (word == "ours") return Application::HotKey::ours;
    if (word == "taken") return Application::HotKey::taken;
    if (word == "onRequest") return Application::HotKey::onRequest;
    return word == "unavailable" ? Application::HotKey::unavailable : Application::HotKey::unknown;
}

Application::Tray trayOf(std::string_view word) {
    if (word == "panel") return Application::Tray::panel;
    if (word == "embedded") return Application::Tray::embedded;
    return word == "none" ? Application::Tray::none : Application::Tray::unknown;
}

// Reads the properties. Returns whether the switch is among them, as it is in every version that has properties.
bool readProperties(sd_bus_message* message, Application& application) {
    bool hasSwitch = false;
    std::string mode, hotKey, tray;
    const int result = forEachEntry(message, "{sv}", [&](std::string_view property) {
        if (property == "Version") return readTextTo(message, application.version);
        if (property == "Mode") return readTextTo(message, mode);
        if (property == "Muting") return readBooleanTo(message, application.isMuting);
        if (property == "LastWritten") return readTextTo(message, application.lastWritten);
        if (property == "Chosen") return readChosen(message, application.chosen);
        if (property == "HotKey") return readTextTo(message, hotKey);
        if (property == "Combination") return readTextTo(message, application.combination);
        if (property == "Tray") return readTextTo(message, tray);
        if (property == "SessionBusFailures") return readFailures(message, application.sessionBusFailures);
        if (property == "SystemBusFailures") return readFailures(message, application.systemBusFailures);
        if (property != "Enabled") return 0;
        hasSwitch = true;
        return readBooleanTo(message, application.isEnabled);
    });
    application.isAlways = mode == "always";
    application.hotKey = hotKeyOf(hotKey);
    application.tray = trayOf(tray);
    return result > 0 && hasSwitch;
}

// Asks the bus itself whether a program owns the application's name. Returns nullopt, and sets `error`, if the bus does
// not say.
std::optional<bool> isNameOwned(sd_bus* session, std::string& error) {
    const BusReply owner = control::ask(session, bus, "/org/freedesktop/DBus", bus, "NameHasOwner",
                                        [](BusWriter& writer) { writer.text(name); });
    int isOwned = 0;
    if (owner.kind == BusReply::Kind::answered && sd_bus_message_read(owner.values.get(), "b", &isOwned) > 0)
        return isOwned != 0;
    error = owner.message.empty() ? "it does not answer" : owner.message;
    return std::nullopt;
}

// Returns the name of the program that owns this name. Empty if that is not known.
std::string programOf(sd_bus* session, const char* ownedName) {
    const BusReply reply = control::ask(session, bus, "/org/freedesktop/DBus", bus, "GetConnectionUnixProcessID",
                                        [ownedName](BusWriter& writer) { writer.text(ownedName); });
    std::uint32_t process = 0;
    if (reply.kind != BusReply::Kind::answered || sd_bus_message_read(reply.values.get(), "u", &process) <= 0)
        return "";
    return nameOfProcess(static_cast<int>(process));
}

// Asks an owner of the name that has no properties for its version.
void askForVersion(sd_bus* session, Application& application) {
    const BusReply reply = ask(session, "Version");
    application.contact = Contact::foreign;
    const char* version = nullptr;
    if (reply.kind == BusReply::Kind::silent) application.contact = Contact::silent;
    if (reply.kind != BusReply::Kind::answered || sd_bus_message_read(reply.values.get(), "s", &version) <= 0) return;
    application.contact = Contact::tooOld;
    application.version = version;
}

}  // namespace

Application askApplication() {
    Application application;
    BusHandle session;
    const int opened = openUserBus(session);
    if (opened < 0) {
        application.error = std::strerror(-opened);
        return application;
    }
    // The bus itself is asked first, to tell a bus that does not answer from an application that does not.
    const auto isOwned = isNameOwned(session.get(), application.error);
    if (!isOwned) return application;
    application.contact = Contact::absent;
    if (!*isOwned) return application;
    const BusReply all = askForProperties(session.get(), name, DBusActivation::path, DBusActivation::ownInterface);
    if (all.kind == BusReply::Kind::silent) {
        application.contact = Contact::silent;
    } else if (all.kind == BusReply::Kind::answered && readProperties(all.values.get(), application)) {
        application.contact = Contact::answered;
        if (application.tray == Application::Tray::panel)
            application.watcher = programOf(session.get(), "org.kde.StatusNotifierWatcher");
    } else if (!meansAbsent(all)) {
        askForVersion(session.get(), application);
    }
    return application;
}

Performed askForAction(const std::string& action) {
    BusHandle session;
    std::string error;
    if (openUserBus(session) < 0 || !isNameOwned(session.get(), error).value_or(false)) return Performed::notRunning;
    const std::string token = DBusActivation::takeOwnToken();
    const BusReply reply = control::ask(session.get(), name, DBusActivation::path, "org.freedesktop.Application",
                                        "ActivateAction", [&](BusWriter& writer) {
                                            writer.text(action).openArray("v").close().openArray("{sv}");
                                            if (!token.empty()) writer.entry("activation-token", token);
                                            writer.close();
                                        });
    if (reply.kind == BusReply::Kind::answered) return Performed::yes;
    if (reply.kind == BusReply::Kind::refused) return meansAbsent(reply) ? Performed::notRunning : Performed::refused;
    return Performed::silent;
}

}  // namespace kovra::control
