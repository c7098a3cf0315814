#pragma once

namespace kovra {

// Loads fontconfig's configuration and its list of fonts in a thread, while the QApplication connects to the display.
// That takes a sixth of the time until the first window is painted. The constructor of the QApplication waits for the
// thread before it uses fonts, so that they are loaded once.
//
// Call it once, before the QApplication is constructed.
void loadFontsEarly();

}  // namespace kovra
