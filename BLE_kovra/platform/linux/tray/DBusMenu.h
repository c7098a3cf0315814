#pragma once

#include <systemd/sd-bus.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "BLE_kovra/platform/linux/bus/BusConnection.h"
#include "BLE_kovra/platform/linux/tray/DBusMenuTypes.h"

namespace kovra {

// The menu on the session bus, exported as com.canonical.dbusmenu with one level below the root. The desktop draws the
// menu, reads it at any time, and reports what the user chose.
//
// A call for one item fails if the item or the property is unknown. EventGroup and AboutToShowGroup fail if all their
// items are unknown, and GetGroupProperties leaves unknown items out. A call with a list longer than `longestList`
// fails too.
class DBusMenu {
  public:
    static constexpr const char* path = "/MenuBar";
    static constexpr const char* interface = "com.canonical.dbusmenu";
    static constexpr std::size_t longestList = 1000;

    // `choose` receives the position of the chosen item. It is called inside sd-bus's dispatch, so it may only post to
    // the queue.
    DBusMenu(const Menu& menu, std::function<void(std::size_t position)> choose);

    void exportOn(BusConnection& bus);
    void detach();

    // Call this function when the menu was replaced. Its items keep their numbers if a late click in the old menu has
    // the same effect in the new one, or none. Otherwise they get new numbers, so that such a click is refused.
    void menuReplaced();
    void statesChanged(const std::vector<std::size_t>& positions);

  private:
    static const std::array<sd_bus_vtable, 16> vtable;
    template <int (DBusMenu::*handle)(sd_bus_message*, sd_bus_error*)>
    static int method(sd_bus_message* call, void* context, sd_bus_error* error);
    static int property(sd_bus* bus, const char* path, const char* interface, const char* name, sd_bus_message* reply,
                        void* context, sd_bus_error* error);

    int getLayout(sd_bus_message* call, sd_bus_error* error);
    int getGroupProperties(sd_bus_message* call, sd_bus_error* error);
    int getProperty(sd_bus_message* call, sd_bus_error* error);
    int event(sd_bus_message* call, sd_bus_error* error);
    int eventGroup(sd_bus_message* call, sd_bus_error* error);
    int aboutToShow(sd_bus_message* call, sd_bus_error* error);
    int aboutToShowGroup(sd_bus_message* call, sd_bus_error* error);

    static constexpr std::int32_t root = 0;
    bool has(std::int32_t id) const { return id == root || positionOf(id).has_value(); }
    std::optional<std::size_t> positionOf(std::int32_t id) const;
    std::int32_t idAt(std::size_t position) const;
    DBusMenuProperties propertiesOf(std::int32_t id) const;
    std::vector<std::int32_t> allIds() const;
    void propertiesChanged(const std::vector<DBusMenuProperties>& former);
    void handleEvent(std::int32_t id, const std::string& event);
    void writeItem(BusWriter& writer, std::int32_t id, bool withChildren, const std::set<std::string>& names) const;

    const Menu& menu_;
    const std::function<void(std::size_t)> choose_;
    BusConnection* bus_ = nullptr;
    BusSlot slot_;
    std::uint32_t revision_ = 1;
    std::int32_t firstId_ = 1;
    std::vector<DBusMenuProperties> announced_;  // the items of the last announced menu
};

}  // namespace kovra
