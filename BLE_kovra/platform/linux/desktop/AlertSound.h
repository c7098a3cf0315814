#pragma once

namespace kovra {

// Plays the desktop's bell sound in a separate process, which exits within five seconds. If the sound cannot be played,
// that process rings the bell of the X server instead, if there is one. This function returns immediately, and leaves
// neither a child process nor a loaded library behind.
void playAlertSound();

}  // namespace kovra
