#pragma once

#include <string>

class QWidget;

namespace kovra {

// Shows the window, raises it above other programs' windows and gives it the keyboard focus, even if it is minimized.
// Wayland requires an activation token for that, which a desktop issues for a click and which is valid once. Without a
// token the desktop decides.
void bringToFront(QWidget& window, const std::string& activationToken = {});

}  // namespace kovra
