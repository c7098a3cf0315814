#pragma once

#include <memory>
#include <string>

#include "BLE_kovra/platform/Drawing.h"
#include "BLE_kovra/platform/View.h"

namespace kovra {

// What a window's frame offers. A window that is not resizable has the size of its content.
struct WindowStyle {
    static constexpr unsigned titled = 1;
    static constexpr unsigned closable = 2;
    static constexpr unsigned miniaturizable = 4;
};

// One window. It is not shown before it is brought to the front. Whatever becomes of the process that draws it, it can
// be shown again.
class Window {
  public:
    virtual ~Window() = default;

    virtual void setTitle(const std::string& title) = 0;
    // The sum of what WindowStyle names.
    virtual void setStyleMask(unsigned mask) = 0;
    // In points, without the frame.
    virtual void setContentSize(Size size) = 0;
    // False: a window that the user closes is hidden, and is the same window when it is shown again.
    virtual void setReleasedWhenClosed(bool isReleased) = 0;
    // In the middle of the screen, when it is shown first.
    virtual void center() = 0;

    // Shows it, in front of all other windows and with the keyboard.
    virtual void makeKeyAndOrderFront() = 0;
    // From makeKeyAndOrderFront() until the user closes it. A minimised window is visible.
    virtual bool isVisible() const = 0;

    // What it shows from now on. Only what differs is changed, so that focus, scroll position and a half-made click
    // survive. What the user does calls back from the event loop.
    virtual void setContent(View content) = 0;
};

class WindowHost {
  public:
    virtual ~WindowHost() = default;
    // The window goes when it is let go of.
    virtual std::unique_ptr<Window> makeWindow(View content) = 0;
};

}  // namespace kovra
