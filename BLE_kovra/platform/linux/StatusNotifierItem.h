#pragma once

#include <systemd/sd-bus.h>

#include <array>
#include <string>
#include <string_view>

#include "BLE_kovra/platform/linux/ActivationToken.h"
#include "BLE_kovra/platform/linux/BusConnection.h"
#include "BLE_kovra/platform/linux/BusMessage.h"
#include "BLE_kovra/platform/linux/TrayItem.h"

namespace kovra {

// The icon on the session bus, as org.kde.StatusNotifierItem: its picture by name and as pixmaps, its tool tip, and
// where its menu is.
//
// The menu is all that it has (ItemIsMenu), and the desktop draws it. There is no Activate: a desktop that calls it all
// the same is told that there is no such method, and most then open the menu, as for a click on anything but an item
// with a window of its own.
class StatusNotifierItem {
  public:
    static constexpr const char* path = "/StatusNotifierItem";
    static constexpr const char* interface = "org.kde.StatusNotifierItem";

    // `iconThemePath` is a folder with the pictures, empty where the desktop's icon theme has them.
    StatusNotifierItem(const TrayContents& contents, ActivationToken& token, std::string iconThemePath);

    void exportOn(sd_bus* bus);
    void letGoOfBus();
    void tell(const TrayChanges& changes);

  private:
    static const std::array<sd_bus_vtable, 28> vtable;
    static int property(sd_bus* bus, const char* path, const char* interface, const char* name, sd_bus_message* reply,
                        void* context, sd_bus_error* error);
    static int nothing(sd_bus_message* call, void* context, sd_bus_error* error);
    static int provideToken(sd_bus_message* call, void* context, sd_bus_error* error);

    void writeProperty(BusWriter& writer, std::string_view name) const;
    void writePixmaps(BusWriter& writer) const;
    void writeToolTip(BusWriter& writer) const;

    const TrayContents& contents_;
    ActivationToken& token_;
    const std::string iconThemePath_;
    sd_bus* bus_ = nullptr;
    BusSlot slot_;
};

// The folder of pictures beside the program, as in a build folder; empty where there is none.
std::string iconsBesideProgram();

}  // namespace kovra
