#pragma once

#include "BLE_kovra/platform/PreferencesStore.h"

namespace kovra {

// The user's defaults for this application, under its bundle identifier. A new value is passed to the system at once,
// and the system writes it to the disk. Invalid UTF-8 in a text is stored as U+FFFD.
class CFPreferencesStore : public PreferencesStore {
  public:
    std::optional<PreferenceValue> object(std::string_view key) const override;
    void set(std::string_view key, const PreferenceValue& value) override;
};

}  // namespace kovra
