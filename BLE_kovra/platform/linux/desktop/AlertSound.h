#pragma once

namespace kovra {

// Plays the desktop's bell sound in a separate process, which exits within five seconds. If the sound cannot be played,
// that process rings the bell of the X server, if there is one. Returns immediately, and leaves neither a child process
// nor a loaded library behind.
void playAlertSound();

}  // namespace kovra
