#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "BLE_kovra/platform/PreferencesStore.h"
#include "BLE_kovra/platform/linux/desktop/SmallTextFile.h"

namespace kovra {

class SystemLog;

// The path of the preferences: ble-kovra/preferences.json in the directory that userConfigFolder() returns. Empty if
// there is no such directory.
std::string standardPreferencesPath();

// A store that keeps the preferences with their types in one JSON file.
//
// The constructor reads the file once. It writes nothing and creates no directory. After that, all values come from
// memory. A save reads the file again and replaces only the values that were set. It preserves everything else: values
// that other programs stored, their order, and values of unknown types. A save is atomic: it writes and syncs a
// temporary file in the same directory and then renames that file. A value that could not be saved is written by the
// next save. If the path is a symbolic link, the file that it points to is replaced.
//
// A file that cannot be parsed as a JSON object counts as damaged. The first save keeps it in the same directory as
// preferences.json.damaged, with a number appended if that name is taken. While a file cannot be read, no save replaces
// it. An empty file holds no values and does not count as damaged. Damaged or unreadable preferences cause one log line
// at startup, and each failed save causes one.
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
    std::string lastText_;  // the valid text that was last loaded or saved; empty if there was none
};

}  // namespace kovra
