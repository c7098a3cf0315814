#pragma once

#include <string>

class QWidget;

namespace kovra {

// Shows the window, raises it above other programs' windows and gives it the keyboard focus, even if it is minimized.
// On Wayland this requires an activation token. The desktop issues a token for a click, and each token is valid once.
// Without a token the desktop decides what happens.
void bringToFront(QWidget& window, const std::string& activationToken = {});

}  // namespace kovra
