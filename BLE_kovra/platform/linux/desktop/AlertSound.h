#pragma once

namespace kovra {

// Plays the desktop's bell sound in a process of its own, which ends by itself within five seconds; where that fails
// the process rings the X server's bell instead, if there is one. Returns at once; leaves neither a child behind nor a
// library in this process.
void playAlertSound();

}  // namespace kovra
