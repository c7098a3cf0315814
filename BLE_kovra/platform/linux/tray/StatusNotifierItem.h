#pragma once

#include <systemd/sd-bus.h>

#include <array>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "BLE_kovra/platform/linux/bus/BusConnection.h"
#include "BLE_kovra/platform/linux/bus/BusMessage.h"
#include "BLE_kovra/platform/linux/session/ActivationToken.h"
#include "BLE_kovra/platform/linux/tray/TrayItem.h"

namespace kovra {

// The icon on the session bus, as org.kde.StatusNotifierItem: its picture by name and as pixmaps, its tool tip, and
// where its menu is.
//
// The menu is all that it has (ItemIsMenu), and the desktop draws it. Some desktops tell of the clicks all the same
// (Activate, SecondaryActivate, ContextMenu): the item then asks for the menu at the place that they name. Where nobody
// can open it there are no such methods, so that a desktop learns this and may open the menu itself.
class StatusNotifierItem {
  public:
    static constexpr const char* path = "/StatusNotifierItem";
    static constexpr const char* interface = "org.kde.StatusNotifierItem";

    // Asks for the menu at a place of the screen. Called inside the bus's callback.
    using PopUp = std::function<void(int x, int y)>;

    // `iconThemePath` is a folder with the pictures, empty where the desktop's icon theme has them. `popUp` is empty
    // where nobody can open the menu.
    StatusNotifierItem(const TrayContents& contents, ActivationToken& token, std::string iconThemePath, PopUp popUp);

    void exportOn(BusConnection& bus);
    void detach();
    void notify(const TrayChanges& changes);

  private:
    static const std::array<sd_bus_vtable, 29> vtable;
    static std::vector<sd_bus_vtable> methods(bool hasClicks);
    static int property(sd_bus* bus, const char* path, const char* interface, const char* name, sd_bus_message* reply,
                        void* context, sd_bus_error* error);
    static int click(sd_bus_message* call, void* context, sd_bus_error* error);
    static int scroll(sd_bus_message* call, void* context, sd_bus_error* error);
    static int provideToken(sd_bus_message* call, void* context, sd_bus_error* error);

    void writeProperty(BusWriter& writer, std::string_view name) const;
    void writePixmaps(BusWriter& writer) const;
    void writeToolTip(BusWriter& writer) const;

    const TrayContents& contents_;
    ActivationToken& token_;
    const std::string iconThemePath_;
    const PopUp popUp_;
    const std::vector<sd_bus_vtable> methods_;
    BusConnection* bus_ = nullptr;
    BusSlot slot_;
};

// The folder of pictures beside the program, as in a build folder; empty where there is none.
std::string iconsBesideProgram();

}  // namespace kovra
