#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "BLE_kovra/platform/PreferencesStore.h"
#include "BLE_kovra/platform/linux/desktop/SmallTextFile.h"

namespace kovra {

class SystemLog;

// $XDG_CONFIG_HOME/ble-kovra/preferences.json, or .config in the user's home in its stead. Empty for a user without a
// home.
std::string standardPreferencesPath();

// Preferences in one JSON file, each with its type.
//
// The file is read once, by the constructor, which writes nothing and makes no folder; from then on memory answers. A
// save reads the file anew, replaces its own key there, and keeps all else as it stands: what others stored, their
// order, and values that nobody here understands. It reaches the disk whole (a temporary beside it, synced, renamed) or
// not at all; what could not be saved goes out with the next save. A link at the path leads to the file that is
// replaced.
//
// A file that is no JSON object is kept as preferences.json.damaged beside the new one by the first save; one that
// cannot be read is left alone, and no save replaces it. An empty file holds nothing and is no damage. One log line for
// damaged or unreadable preferences at the start and for each save that failed.
//
// Not promised: two processes that save at the same moment. The later one then wins, whole.
class JsonPreferencesStore : public PreferencesStore {
  public:
    JsonPreferencesStore(std::string path, SystemLog& log);

    std::optional<PreferenceValue> object(std::string_view key) const override;
    void set(std::string_view key, const PreferenceValue& value) override;

  private:
    using Values = std::map<std::string, PreferenceValue, std::less<>>;

    // 0, or the error.
    int save();

    SmallTextFile file_;
    SystemLog& log_;
    Values values_;
    Values unsaved_;
    std::string known_;  // the file's text as this process last read or wrote it
};

}  // namespace kovra
