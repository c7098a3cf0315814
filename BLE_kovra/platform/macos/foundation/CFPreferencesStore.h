#pragma once

#include "BLE_kovra/platform/PreferencesStore.h"

namespace kovra {

// The user's defaults of this application, under the identifier of its bundle. What is set is given to the system at
// once, which brings it to the disk. A text that is no UTF-8 is kept with U+FFFD in place of what is none.
class CFPreferencesStore : public PreferencesStore {
  public:
    std::optional<PreferenceValue> object(std::string_view key) const override;
    void set(std::string_view key, const PreferenceValue& value) override;
};

}  // namespace kovra
