#pragma once

class QWidget;

namespace kovra {

// Centers the window on the work area of its screen, frame included. A frame that is larger than the work area begins
// at its top left corner. Call this function before the window is shown, with its final size. The window manager adds
// the frame when it shows the window, so the position is corrected then. On Wayland the desktop chooses the position.
void centerByFrame(QWidget& window);

}  // namespace kovra
