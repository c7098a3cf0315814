#pragma once

#include "BLE_kovra/platform/PreferencesStore.h"
#include "BLE_kovra/system/GlobalHotkey.h"

namespace kovra {

// Decides when the user is asked for the hot key, on desktops that ask before they assign one (HotKeyState). By itself
// the application asks once, ever: when the user has opened the settings. After that, only the user asks for it again.
//
// Some desktops forget at the end of the session what they have granted. A hot key that was granted is therefore
// requested again if the desktop does not know it at the next start. If the desktop does know it there, the hot key is
// left to that desktop from then on: what it no longer knows later, the user has taken away.
//
// The store records the request before it is made. So an application that ends while the user is being asked does not
// ask again either.
class HotKeyRequest {
  public:
    HotKeyRequest(GlobalHotkey& hotkey, PreferencesStore& store) : hotkey_(hotkey), store_(store) {}

    // The state of the hot key has changed.
    void stateChanged();
    // The user has opened the settings.
    void settingsOpened();
    // The user wants to be asked. Does nothing on a desktop that does not ask.
    void make();

  private:
    void makeIfDue();
    void record(const char* key, bool value);

    GlobalHotkey& hotkey_;
    PreferencesStore& store_;
    bool hasOpenedSettings_ = false;
    bool hasMade_ = false;  // since the start
};

}  // namespace kovra
