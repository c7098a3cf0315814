#include "BLE_kovra/platform/linux/tray/DBusMenuTypes.h"

#include <array>
#include <type_traits>

#include "BLE_kovra/platform/linux/desktop/XdgEnvironment.h"

namespace kovra {

namespace {

// In a label, one underscore marks a mnemonic, and two stand for one underscore.
std::string asLabel(std::string_view title) {
    std::string label;
    for (const char c : title) {
        label += c;
        if (c == '_') label += c;
    }
    return label;
}

// Panels parse the name of a key with their toolkit. GTK expects X keysym names, Qt expects the character on the key.
// For lower-case letters and digits both are the same. Returns an empty name for any other key except the comma.
std::string keyName(const std::string& key) {
    if (key == ",") return anyOf(desktopNames(), {"KDE", "LXQt"}) ? "," : "comma";
    if (key.size() != 1) return "";
    const char c = key.front();
    const bool isPlain = (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
    return isPlain ? key : "";
}

const char* typeOf(const DBusMenuProperty& property) {
    constexpr std::array types{"b", "i", "s", "aas"};
    return types.at(property.value.index());
}

// Reads an array element by element. `readOne` returns the result of sd-bus, which is 0 at the end of the array.
template <typename ReadOne>
int readArray(sd_bus_message* call, const char* of, std::size_t atMost, sd_bus_error* error, ReadOne readOne) {
    int result = sd_bus_message_enter_container(call, SD_BUS_TYPE_ARRAY, of);
    if (result < 0) return result;
    for (std::size_t count = 0; (result = readOne()) > 0; ++count) {
        if (count == atMost) {
            return sd_bus_error_setf(error, SD_BUS_ERROR_LIMITS_EXCEEDED, "A list of more than %zu.", atMost);
        }
    }
    return result < 0 ? result : sd_bus_message_exit_container(call);
}

}  // namespace

DBusMenuProperties dbusMenuProperties(const MenuItem& item) {
    if (item.isSeparator) return {{"type", std::string("separator")}};
    DBusMenuProperties properties{{"label", asLabel(item.title)}};
    if (!item.isEnabled) properties.push_back({"enabled", false});
    if (item.state) properties.push_back({"toggle-type", std::string("checkmark")});
    for (const DBusMenuProperty& state : dbusMenuState(item)) properties.push_back(state);
    if (const std::string key = keyName(item.keyEquivalent); !key.empty()) {
        properties.push_back({"shortcut", DBusMenuShortcut{"Control", key}});
    }
    return properties;
}

DBusMenuProperties dbusMenuRootProperties() { return {{"children-display", std::string("submenu")}}; }

const DBusMenuProperties& dbusMenuDefaults() {
    static const DBusMenuProperties defaults{{"type", std::string("standard")},
                                             {"label", std::string()},
                                             {"enabled", true},
                                             {"visible", true},
                                             {"icon-name", std::string()},
                                             {"toggle-type", std::string()},
                                             {"toggle-state", std::int32_t{-1}},
                                             {"children-display", std::string()},
                                             {"shortcut", DBusMenuShortcut{}},
                                             {"disposition", std::string("normal")}};
    return defaults;
}

DBusMenuProperties dbusMenuState(const MenuItem& item) {
    if (!item.state) return {};
    return {{"toggle-state", std::int32_t{*item.state == MenuItemState::on ? 1 : 0}}};
}

void write(BusWriter& writer, const DBusMenuProperty& property) {
    writer.openVariant(typeOf(property));
    std::visit(
        [&](const auto& value) {
            using Value = std::decay_t<decltype(value)>;
            if constexpr (std::is_same_v<Value, bool>) {
                writer.boolean(value);
            } else if constexpr (std::is_same_v<Value, std::int32_t>) {
                writer.integer(value);
            } else if constexpr (std::is_same_v<Value, std::string>) {
                writer.text(value);
            } else {
                writer.openArray("as");
                if (!value.empty()) {
                    writer.openArray("s");
                    for (const std::string& key : value) writer.text(key);
                    writer.close();
                }
                writer.close();
            }
        },
        property.value);
    writer.close();
}

void write(BusWriter& writer, const DBusMenuProperties& properties, const std::set<std::string>& names) {
    writer.openArray("{sv}");
    for (const DBusMenuProperty& property : properties) {
        if (!names.empty() && !names.contains(property.name)) continue;
        writer.openEntry("sv").text(property.name);
        write(writer, property);
        writer.close();
    }
    writer.close();
}

int readIds(sd_bus_message* call, std::size_t atMost, std::vector<std::int32_t>& ids, sd_bus_error* error) {
    return readArray(call, "i", atMost, error, [&] {
        std::int32_t id = 0;
        const int result = sd_bus_message_read(call, "i", &id);
        if (result > 0) ids.push_back(id);
        return result;
    });
}

int readNames(sd_bus_message* call, std::size_t atMost, std::set<std::string>& names, sd_bus_error* error) {
    return readArray(call, "s", atMost, error, [&] {
        const char* name = nullptr;
        const int result = sd_bus_message_read(call, "s", &name);
        if (result > 0) names.insert(name);
        return result;
    });
}

int readEvents(sd_bus_message* call, std::size_t atMost, std::vector<MenuEvent>& events, sd_bus_error* error) {
    return readArray(call, "(isvu)", atMost, error, [&] {
        int result = sd_bus_message_enter_container(call, SD_BUS_TYPE_STRUCT, "isvu");
        if (result <= 0) return result;
        MenuEvent event;
        result = readEvent(call, event);
        if (result < 0) return result;
        events.push_back(event);
        result = sd_bus_message_exit_container(call);
        return result < 0 ? result : 1;
    });
}

int readEvent(sd_bus_message* call, MenuEvent& event) {
    const char* name = nullptr;
    int result = sd_bus_message_read(call, "is", &event.id, &name);
    if (result >= 0) result = sd_bus_message_skip(call, "vu");
    if (result < 0) return result;
    event.name = name;
    return 1;
}

void writeIds(BusWriter& writer, const std::vector<std::int32_t>& ids) {
    writer.openArray("i");
    for (const std::int32_t id : ids) writer.integer(id);
    writer.close();
}

}  // namespace kovra
