#pragma once

#include <functional>
#include <memory>
#include <string>

#include "BLE_kovra/platform/Drawing.h"
#include "BLE_kovra/platform/View.h"

namespace kovra {

// The parts of a window's frame. None of them makes the window resizable.
struct WindowStyle {
    static constexpr unsigned titled = 1;
    static constexpr unsigned closable = 2;
    static constexpr unsigned miniaturizable = 4;
};

// A window. If the process that draws it ends, makeKeyAndOrderFront() shows the window again.
class Window {
  public:
    virtual ~Window() = default;

    virtual void setTitle(const std::string& title) = 0;
    // A combination of the flags in WindowStyle.
    virtual void setStyleMask(unsigned mask) = 0;
    // Sets the size in points, without the frame.
    virtual void setContentSize(Size size) = 0;
    // If false, closing the window only hides it.
    virtual void setReleasedWhenClosed(bool isReleased) = 0;
    // The function is called from the queue after each makeKeyAndOrderFront(), once the user sees the window.
    virtual void setOnShown(std::function<void()> onShown) = 0;
    // Centers the window on the screen when it is first shown.
    virtual void center() = 0;

    // Shows the window in front of all others, with the keyboard focus.
    virtual void makeKeyAndOrderFront() = 0;
    // Returns true from makeKeyAndOrderFront() until the user closes the window. A minimized window counts as visible.
    virtual bool isVisible() const = 0;

    // Replaces the content. Only the differences are applied, so that the focus, the scroll position and a click in
    // progress are preserved. The callbacks of controls run from the event loop.
    virtual void setContent(View content) = 0;
};

class WindowHost {
  public:
    virtual ~WindowHost() = default;
    // Destroying the returned object closes the window.
    virtual std::unique_ptr<Window> makeWindow(View content) = 0;
};

}  // namespace kovra
