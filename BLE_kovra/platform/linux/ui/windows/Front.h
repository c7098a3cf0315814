#pragma once

#include <string>

class QWidget;

namespace kovra {

// Shows the window and brings it to the front with the keyboard, also out of the task bar and before the windows of
// other programs. On Wayland that takes an activation token, which the desktop gives for a click and which is good
// once; without one the desktop decides.
void bringToFront(QWidget& window, const std::string& activationToken = {});

}  // namespace kovra
