#include "BLE_kovra/platform/linux/tray/DBusMenu.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <utility>

#include "BLE_kovra/platform/linux/tray/DBusMenuTypes.h"

namespace kovra {

namespace {

int refuseId(sd_bus_error* error, std::int32_t id) {
    return sd_bus_error_setf(error, SD_BUS_ERROR_INVALID_ARGS, "The menu has no item %d.", static_cast<int>(id));
}

const DBusMenuProperty* find(const DBusMenuProperties& item, std::string_view name) {
    const auto found =
        std::find_if(item.begin(), item.end(), [&](const auto& property) { return property.name == name; });
    return found == item.end() ? nullptr : &*found;
}

bool isSame(const DBusMenuProperties& one, const DBusMenuProperties& other, std::string_view name) {
    const DBusMenuProperty* left = find(one, name);
    const DBusMenuProperty* right = find(other, name);
    return left == nullptr || right == nullptr ? left == right : *left == *right;
}

// Returns whether a late click on the former item would have the right effect: the same one, or none.
bool canTakeItsPlace(const DBusMenuProperties& former, const DBusMenuProperties& item) {
    const bool canBeChosen = find(former, "enabled") == nullptr && find(item, "enabled") == nullptr;
    return isSame(former, item, "type") && (isSame(former, item, "label") || !canBeChosen);
}

// Sets the error of a call that requests only unknown items.
int refuseIds(sd_bus_error* error) {
    return sd_bus_error_set(error, SD_BUS_ERROR_INVALID_ARGS, "The menu has none of these items.");
}

}  // namespace

DBusMenu::DBusMenu(const Menu& menu, std::function<void(std::size_t)> choose)
    : menu_(menu), choose_(std::move(choose)) {}

void DBusMenu::exportOn(BusConnection& bus) {
    slot_ = bus.exportObject(path, interface, vtable.data(), this);
    bus_ = &bus;
}

void DBusMenu::detach() {
    slot_.reset();
    bus_ = nullptr;
}

void DBusMenu::menuReplaced() {
    std::vector<DBusMenuProperties> items;
    for (const MenuItem& item : menu_.items) items.push_back(dbusMenuProperties(item));
    const std::vector<DBusMenuProperties> former = std::exchange(announced_, std::move(items));
    if (!former.empty() &&
        std::equal(former.begin(), former.end(), announced_.begin(), announced_.end(), canTakeItsPlace))
        return propertiesChanged(former);
    ++revision_;
    constexpr std::int32_t farthest = std::numeric_limits<std::int32_t>::max() / 2;
    firstId_ = firstId_ < farthest ? firstId_ + static_cast<std::int32_t>(former.size()) : 1;
    if (bus_ == nullptr) return;
    bus_->emit(path, interface, "LayoutUpdated",
               [this](BusWriter& arguments) { arguments.natural(revision_).integer(root); });
}

void DBusMenu::propertiesChanged(const std::vector<DBusMenuProperties>& former) {
    if (bus_ == nullptr || former == announced_) return;
    bus_->emit(path, interface, "ItemsPropertiesUpdated", [&](BusWriter& writer) {
        writer.openArray("(ia{sv})");
        for (std::size_t position = 0; position < former.size(); ++position) {
            if (former[position] == announced_[position]) continue;
            writer.openStruct("ia{sv}").integer(idAt(position));
            write(writer, announced_[position], {});
            writer.close();
        }
        writer.close().openArray("(ias)");
        for (std::size_t position = 0; position < former.size(); ++position) {
            if (former[position] == announced_[position]) continue;
            writer.openStruct("ias").integer(idAt(position)).openArray("s");
            for (const DBusMenuProperty& property : former[position]) {
                if (find(announced_[position], property.name) == nullptr) writer.text(property.name);
            }
            writer.close().close();
        }
        writer.close();
    });
}

void DBusMenu::statesChanged(const std::vector<std::size_t>& positions) {
    for (const std::size_t position : positions) {
        if (position < announced_.size()) announced_[position] = dbusMenuProperties(menu_.items.at(position));
    }
    if (bus_ == nullptr) return;
    bus_->emit(path, interface, "ItemsPropertiesUpdated", [&](BusWriter& writer) {
        writer.openArray("(ia{sv})");
        for (const std::size_t position : positions) {
            writer.openStruct("ia{sv}").integer(idAt(position));
            write(writer, dbusMenuState(menu_.items.at(position)), {});
            writer.close();
        }
        writer.close().openArray("(ias)").close();
    });
}

std::optional<std::size_t> DBusMenu::positionOf(std::int32_t id) const {
    if (id < firstId_) return std::nullopt;
    const auto position = static_cast<std::size_t>(id - firstId_);
    return position < menu_.items.size() ? std::optional(position) : std::nullopt;
}

std::int32_t DBusMenu::idAt(std::size_t position) const { return firstId_ + static_cast<std::int32_t>(position); }

DBusMenuProperties DBusMenu::propertiesOf(std::int32_t id) const {
    const auto position = positionOf(id);
    return position ? dbusMenuProperties(menu_.items[*position]) : dbusMenuRootProperties();
}

std::vector<std::int32_t> DBusMenu::allIds() const {
    std::vector<std::int32_t> ids{root};
    for (std::size_t position = 0; position < menu_.items.size(); ++position) ids.push_back(idAt(position));
    return ids;
}

void DBusMenu::handleEvent(std::int32_t id, const std::string& event) {
    const auto position = positionOf(id);
    if (position && event == "clicked") choose_(*position);
}

void DBusMenu::writeItem(BusWriter& writer, std::int32_t id, bool withChildren,
                         const std::set<std::string>& names) const {
    writer.openStruct("ia{sv}av").integer(id);
    write(writer, propertiesOf(id), names);
    writer.openArray("v");
    if (id == root && withChildren) {
        for (std::size_t position = 0; position < menu_.items.size(); ++position) {
            writer.openVariant("(ia{sv}av)");
            writeItem(writer, idAt(position), false, names);
            writer.close();
        }
    }
    writer.close().close();
}

int DBusMenu::getLayout(sd_bus_message* call, sd_bus_error* error) {
    std::int32_t parent = 0;
    std::int32_t depth = 0;
    std::set<std::string> names;
    int result = sd_bus_message_read(call, "ii", &parent, &depth);
    if (result >= 0) result = readNames(call, longestList, names, error);
    if (result < 0) return result;
    if (!has(parent)) return refuseId(error, parent);
    return answer(call, [&](BusWriter& writer) {
        writer.natural(revision_);
        writeItem(writer, parent, depth != 0, names);
    });
}

int DBusMenu::getGroupProperties(sd_bus_message* call, sd_bus_error* error) {
    std::vector<std::int32_t> ids;
    std::set<std::string> names;
    int result = readIds(call, longestList, ids, error);
    if (result >= 0) result = readNames(call, longestList, names, error);
    if (result < 0) return result;
    if (ids.empty()) ids = allIds();
    return answer(call, [&](BusWriter& writer) {
        writer.openArray("(ia{sv})");
        for (const std::int32_t id : ids) {
            if (!has(id)) continue;
            writer.openStruct("ia{sv}").integer(id);
            write(writer, propertiesOf(id), names);
            writer.close();
        }
        writer.close();
    });
}

int DBusMenu::getProperty(sd_bus_message* call, sd_bus_error* error) {
    std::int32_t id = 0;
    const char* name = nullptr;
    const int result = sd_bus_message_read(call, "is", &id, &name);
    if (result < 0) return result;
    if (!has(id)) return refuseId(error, id);
    const DBusMenuProperties own = propertiesOf(id);
    for (const DBusMenuProperties* properties : {&own, &dbusMenuDefaults()}) {
        for (const DBusMenuProperty& property : *properties) {
            if (property.name == name) return answer(call, [&](BusWriter& writer) { write(writer, property); });
        }
    }
    return sd_bus_error_set(error, SD_BUS_ERROR_INVALID_ARGS, "No item has such a property.");
}

int DBusMenu::event(sd_bus_message* call, sd_bus_error* error) {
    MenuEvent event;
    const int result = readEvent(call, event);
    if (result < 0) return result;
    if (!has(event.id)) return refuseId(error, event.id);
    handleEvent(event.id, event.name);
    return sd_bus_reply_method_return(call, "");
}

int DBusMenu::eventGroup(sd_bus_message* call, sd_bus_error* error) {
    std::vector<MenuEvent> events;
    const int result = readEvents(call, longestList, events, error);
    if (result < 0) return result;
    std::vector<std::int32_t> missing;
    for (const MenuEvent& event : events) {
        if (!has(event.id)) missing.push_back(event.id);
    }
    if (!events.empty() && missing.size() == events.size()) return refuseIds(error);
    for (const MenuEvent& event : events) handleEvent(event.id, event.name);
    return answer(call, [&](BusWriter& writer) { writeIds(writer, missing); });
}

// The exported menu is always up to date, so the desktop never has to read it again before showing it.
int DBusMenu::aboutToShow(sd_bus_message* call, sd_bus_error* error) {
    std::int32_t id = 0;
    const int result = sd_bus_message_read(call, "i", &id);
    if (result < 0) return result;
    if (!has(id)) return refuseId(error, id);
    return answer(call, [](BusWriter& writer) { writer.boolean(false); });
}

int DBusMenu::aboutToShowGroup(sd_bus_message* call, sd_bus_error* error) {
    std::vector<std::int32_t> ids;
    const int result = readIds(call, longestList, ids, error);
    if (result < 0) return result;
    const std::size_t asked = ids.size();
    std::erase_if(ids, [this](std::int32_t id) { return has(id); });
    if (asked > 0 && ids.size() == asked) return refuseIds(error);
    return answer(call, [&](BusWriter& writer) {
        writeIds(writer, {});
        writeIds(writer, ids);
    });
}

template <int (DBusMenu::*handle)(sd_bus_message*, sd_bus_error*)>
int DBusMenu::method(sd_bus_message* call, void* context, sd_bus_error* error) {
    auto* menu = static_cast<DBusMenu*>(context);
    return menu == nullptr ? 0 : (menu->*handle)(call, error);
}

int DBusMenu::property(sd_bus*, const char*, const char*, const char* name, sd_bus_message* reply, void*,
                       sd_bus_error*) {
    BusWriter writer(reply);
    const std::string_view asked = name;
    if (asked == "Version") writer.natural(3);
    if (asked == "TextDirection") writer.text("ltr");
    if (asked == "Status") writer.text("normal");
    if (asked == "IconThemePath") writer.openArray("s").close();
    return writer.result();
}

const std::array<sd_bus_vtable, 16> DBusMenu::vtable = {{
    SD_BUS_VTABLE_START(0),
    SD_BUS_PROPERTY("Version", "u", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("TextDirection", "s", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Status", "s", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("IconThemePath", "as", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_METHOD_WITH_ARGS("GetLayout", SD_BUS_ARGS("i", parentId, "i", recursionDepth, "as", propertyNames),
                            SD_BUS_RESULT("u", revision, "(ia{sv}av)", layout), method<&DBusMenu::getLayout>,
                            SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("GetGroupProperties", SD_BUS_ARGS("ai", ids, "as", propertyNames),
                            SD_BUS_RESULT("a(ia{sv})", properties), method<&DBusMenu::getGroupProperties>,
                            SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("GetProperty", SD_BUS_ARGS("i", id, "s", name), SD_BUS_RESULT("v", value),
                            method<&DBusMenu::getProperty>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("Event", SD_BUS_ARGS("i", id, "s", eventId, "v", data, "u", timestamp), SD_BUS_NO_RESULT,
                            method<&DBusMenu::event>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("EventGroup", SD_BUS_ARGS("a(isvu)", events), SD_BUS_RESULT("ai", idErrors),
                            method<&DBusMenu::eventGroup>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("AboutToShow", SD_BUS_ARGS("i", id), SD_BUS_RESULT("b", needUpdate),
                            method<&DBusMenu::aboutToShow>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("AboutToShowGroup", SD_BUS_ARGS("ai", ids),
                            SD_BUS_RESULT("ai", updatesNeeded, "ai", idErrors), method<&DBusMenu::aboutToShowGroup>,
                            SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_SIGNAL_WITH_ARGS("ItemsPropertiesUpdated", SD_BUS_ARGS("a(ia{sv})", updatedProps, "a(ias)", removedProps),
                            0),
    SD_BUS_SIGNAL_WITH_ARGS("LayoutUpdated", SD_BUS_ARGS("u", revision, "i", parent), 0),
    SD_BUS_SIGNAL_WITH_ARGS("ItemActivationRequested", SD_BUS_ARGS("i", id, "u", timestamp), 0),
    SD_BUS_VTABLE_END,
}};

}  // namespace kovra
