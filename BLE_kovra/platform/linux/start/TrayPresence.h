#pragma once

#include <string>

namespace kovra {

class StatusNotifierWatcher;
class WindowProcess;

// Whether a tray shows the program's icon: a StatusNotifier host, or a tray that embeds the icon's window.
class TrayPresence {
  public:
    TrayPresence(const StatusNotifierWatcher& watcher, const WindowProcess& window)
        : watcher_(watcher), window_(window) {}

    bool hasIcon() const { return tray() != Tray::none; }
    // Returns which tray it is, in the words of DBusFacts: "panel", "embedded" or "none".
    const char* name() const;
    // Returns the key of the text that tells the user how to get a tray, if there is none and the desktop is known not
    // to have one of its own. This is GNOME. Returns an empty text otherwise.
    std::string advice() const;

  private:
    enum class Tray { none, panel, embedded };
    Tray tray() const;

    const StatusNotifierWatcher& watcher_;
    const WindowProcess& window_;
};

}  // namespace kovra
