#pragma once

namespace kovra {

// Plays the desktop's bell sound in a process of its own, which ends by itself within five seconds. Returns at once;
// leaves neither a child behind nor a library in this process. Where the desktop has no sounds, silence.
void playAlertSound();

}  // namespace kovra
