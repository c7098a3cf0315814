#include "BLE_kovra/platform/linux/session/DBusFacts.h"

#include <string_view>
#include <utility>
#include <variant>

#include "BLE_kovra/platform/linux/bus/BusMessage.h"
#include "BLE_kovra/platform/linux/desktop/BuildBundle.h"
#include "BLE_kovra/platform/linux/session/DBusActivation.h"

namespace kovra {

namespace {

const char* textOf(ApplicationFacts::Presence presence) {
    switch (presence) {
        case ApplicationFacts::Presence::connected:
            return "connected";
        case ApplicationFacts::Presence::inGrace:
            return "inGrace";
        case ApplicationFacts::Presence::away:
            break;
    }
    return "away";
}

const char* textOf(HotKeyState::Holder holder) {
    switch (holder) {
        case HotKeyState::Holder::us:
            return "ours";
        case HotKeyState::Holder::another:
            return "taken";
        case HotKeyState::Holder::unrequested:
        case HotKeyState::Holder::refused:
            return "onRequest";
        case HotKeyState::Holder::nobody:
            break;
    }
    return "unavailable";
}

// Returns the registered combination if the desktop has not named another one.
std::string combinationOf(const HotKeyState& state) {
    return state.combination.empty() ? "Ctrl+Alt+T" : state.combination;
}

void writeChosen(BusWriter& writer, const std::vector<ApplicationFacts::ChosenDevice>& chosen) {
    writer.openArray("(ss)");
    for (const auto& device : chosen) writer.openStruct("ss").text(device.name).text(textOf(device.presence)).close();
    writer.close();
}

void writeFailures(BusWriter& writer, const BusFailures* failures) {
    writer.openArray("s");
    if (failures != nullptr) {
        for (const std::string& failure : failures->all()) writer.text(failure);
    }
    writer.close();
}

std::string version() {
    const auto value = BuildBundle().infoDictionaryValue("CFBundleShortVersionString");
    const auto* text = value ? std::get_if<std::string>(&*value) : nullptr;
    return text == nullptr ? "" : *text;
}

}  // namespace

DBusFacts::DBusFacts(SessionBus& bus, Sources sources) : sources_(std::move(sources)) {
    exportOn(bus.connection());
    listening_ = bus.listen([this](BusConnection* changed) { exportOn(changed); });
}

void DBusFacts::exportOn(BusConnection* bus) {
    if (bus == nullptr)
        object_.reset();
    else if (!object_)
        object_ = bus->exportObject(DBusActivation::path, DBusActivation::ownInterface, table.data(), this);
}

int DBusFacts::read(sd_bus*, const char*, const char*, const char* property, sd_bus_message* reply, void* context,
                    sd_bus_error*) {
    const auto* self = static_cast<const DBusFacts*>(context);
    if (self == nullptr) return 0;
    const Sources& from = self->sources_;
    const ApplicationFacts facts = from.application().value_or(ApplicationFacts{});
    const std::string_view name = property;
    BusWriter writer(reply);
    if (name == "Version") writer.text(version());
    if (name == "Enabled") writer.boolean(facts.isEnabled);
    if (name == "Mode") writer.text(facts.mode);
    if (name == "Muting") writer.boolean(facts.isMuting);
    if (name == "LastWritten") writer.text(facts.lastWritten);
    if (name == "Chosen") writeChosen(writer, facts.chosen);
    if (name == "HotKey") writer.text(textOf(from.hotKey().holder));
    if (name == "Combination") writer.text(combinationOf(from.hotKey()));
    if (name == "Tray") writer.text(from.tray());
    if (name == "SessionBusFailures") writeFailures(writer, from.sessionBus);
    if (name == "SystemBusFailures") writeFailures(writer, from.systemBus);
    return writer.result();
}

const std::array<sd_bus_vtable, 13> DBusFacts::table{{
    SD_BUS_VTABLE_START(0),
    SD_BUS_PROPERTY("Version", "s", read, 0, 0),
    SD_BUS_PROPERTY("Enabled", "b", read, 0, 0),
    SD_BUS_PROPERTY("Mode", "s", read, 0, 0),
    SD_BUS_PROPERTY("Muting", "b", read, 0, 0),
    SD_BUS_PROPERTY("LastWritten", "s", read, 0, 0),
    SD_BUS_PROPERTY("Chosen", "a(ss)", read, 0, 0),
    SD_BUS_PROPERTY("HotKey", "s", read, 0, 0),
    SD_BUS_PROPERTY("Combination", "s", read, 0, 0),
    SD_BUS_PROPERTY("Tray", "s", read, 0, 0),
    SD_BUS_PROPERTY("SessionBusFailures", "as", read, 0, 0),
    SD_BUS_PROPERTY("SystemBusFailures", "as", read, 0, 0),
    SD_BUS_VTABLE_END,
}};

}  // namespace kovra
