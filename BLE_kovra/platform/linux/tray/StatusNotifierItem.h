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
#include "BLE_kovra/platform/linux/theme/PanelLook.h"
#include "BLE_kovra/platform/linux/tray/TrayItem.h"

namespace kovra {

// The icon on the session bus, exported as org.kde.StatusNotifierItem. The item has an image (by name and as pixmaps),
// a tool tip, and the path of the menu.
//
// A click on the item only opens its menu (ItemIsMenu), which the desktop draws. Some desktops report clicks anyway
// (Activate, SecondaryActivate, ContextMenu). The item then opens the menu at the position of the click. If the program
// cannot open a menu, Activate and ContextMenu are not exported. The desktop then gets an error and may open the menu
// itself. SecondaryActivate does nothing then, since GNOME logs a warning at each error after a middle click.
class StatusNotifierItem {
  public:
    static constexpr const char* path = "/StatusNotifierItem";
    static constexpr const char* interface = "org.kde.StatusNotifierItem";

    // Opens the menu at a position on the screen. Called inside sd-bus's dispatch, so it may only post to the queue.
    using PopUp = std::function<void(int x, int y)>;

    // `iconThemePath` is a folder with the icons; it is empty if the icon theme of the desktop has them. `popUp` is
    // empty if the program cannot open the menu.
    StatusNotifierItem(const TrayContents& contents, const PanelLook& look, ActivationToken& token,
                       std::string iconThemePath, PopUp popUp);

    void exportOn(BusConnection& bus);
    void detach();
    void notify(const TrayChanges& changes);

  private:
    static const std::array<sd_bus_vtable, 30> vtable;
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
    const PanelLook& look_;
    ActivationToken& token_;
    const std::string iconThemePath_;
    const PopUp popUp_;
    const std::vector<sd_bus_vtable> methods_;
    BusConnection* bus_ = nullptr;
    BusSlot slot_;
};

// Returns the icon folder next to the program, as in a build folder. Returns an empty path if there is none.
std::string iconsBesideProgram();

}  // namespace kovra
