#pragma once

#include <QEvent>
#include <QWidget>

namespace kovra {

// To be called with each change of a window that cannot be resized. If the window was maximized, restores it.
//
// The title bar that the toolkit draws on GNOME's Wayland has a button for maximizing, whatever the window permits.
// The desktop then moves the window to a corner, since it cannot enlarge it.
inline void refuseMaximizing(QWidget& window, const QEvent& change) {
    if (change.type() == QEvent::WindowStateChange && window.isMaximized())
        window.setWindowState(window.windowState() & ~Qt::WindowMaximized);
}

}  // namespace kovra
