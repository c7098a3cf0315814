#pragma once

#include <xcb/damage.h>
#include <xcb/xcb.h>

#include <cstdint>

#include "bench/instruments/Subject.h"

namespace bench {

// The part of a panel on the X server: a tray that embeds windows. It also reports when any other window is mapped, and
// when the newest of these is unmapped.
class XScreen {
  public:
    explicit XScreen(const Subject& subject);
    ~XScreen();
    XScreen(const XScreen&) = delete;
    XScreen& operator=(const XScreen&) = delete;

    int descriptor() const { return xcb_get_file_descriptor(x_); }
    // Handles pending events. Returns false after the server has disconnected.
    bool answer();
    // Makes answer() report the first drawing on the screen after the next window has been mapped.
    void watchForWindow();
    // Sends the newest window the message that a window manager sends for its close button.
    void closeWindow();

  private:
    xcb_atom_t atom(const char* name) const;
    void becomeTray();
    void dock(xcb_window_t icon);
    void windowCame(const xcb_map_notify_event_t& event);
    void windowWent(const xcb_unmap_notify_event_t& event);
    void drawn();
    void stopWatching();

    const Subject& subject_;
    xcb_connection_t* x_ = nullptr;
    xcb_screen_t* screen_ = nullptr;
    xcb_window_t tray_ = 0;
    xcb_window_t newest_ = 0;
    xcb_atom_t trayRequest_ = 0;
    std::uint8_t damageNotify_ = 0;
    // Watches the whole screen. A damage object of the new window itself would be created too late for the first
    // drawing, and would first report the existing contents.
    xcb_damage_damage_t drawings_ = 0;
    bool hasCome_ = false;
};

}  // namespace bench
