#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "BLE_kovra/platform/PreferencesStore.h"
#include "BLE_kovra/platform/linux/desktop/SmallTextFile.h"

namespace kovra {

class SystemLog;

// The path of the preferences: $XDG_CONFIG_HOME/ble-kovra/preferences.json. Without that variable, .config in the home
// directory is used. Empty if the user has no home directory.
std::string standardPreferencesPath();

// Stores the preferences and their types in one JSON file.
//
// The constructor reads the file once. It writes nothing and creates no directory. After that, all values come from
// memory. A save reads the file again and replaces only its own keys. It preserves everything else: values that other
// programs stored, their order, and values of unknown types. A save is atomic: the text goes to a temporary file in the
// same directory, which is synced and then renamed. A value that could not be saved is written by the next save. If the
// path is a symbolic link, the file that it points to is replaced.
//
// A file that is not a JSON object is damaged. The first save keeps it as preferences.json.damaged in the same
// directory. While a file cannot be read, no save replaces it. An empty file holds no values and does not count as
// damaged. Damaged or unreadable preferences cause one log line at startup, and each failed save causes one.
//
// Two processes that save at the same moment are not synchronized: the later save replaces the whole file.
class JsonPreferencesStore : public PreferencesStore {
  public:
    JsonPreferencesStore(std::string path, SystemLog& log);

    std::optional<PreferenceValue> object(std::string_view key) const override;
    void set(std::string_view key, const PreferenceValue& value) override;

  private:
    using Values = std::map<std::string, PreferenceValue, std::less<>>;

    // Returns 0 or an errno value.
    int save();

    SmallTextFile file_;
    SystemLog& log_;
    Values values_;
    Values unsaved_;
    std::string lastText_;  // the contents of the file when this process last read or wrote it
};

}  // namespace kovra
