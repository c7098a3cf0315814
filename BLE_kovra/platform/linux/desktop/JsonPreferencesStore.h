#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "BLE_kovra/platform/PreferencesStore.h"
#include "BLE_kovra/platform/posix/BackgroundSaves.h"

namespace kovra {

class SystemLog;

// Returns the path of the preferences: ble-kovra/preferences.json in the directory that userConfigFolder() returns.
// Returns an empty path if there is no such directory.
std::string standardPreferencesPath();

// A store that keeps the preferences with their types in one JSON file.
//
// The constructor reads the file once. It writes nothing and creates no directory. After that, all values come from
// memory. A save reads the file again and replaces only the values that were set. It preserves everything else: values
// that other programs stored, their order, and values of unknown types. A save is atomic: it writes and syncs a
// temporary file in the same directory and then renames that file. A value that could not be saved is written by the
// next save. If the path is a symbolic link, the file that it points to is replaced.
//
// A file that cannot be parsed as a JSON object counts as damaged. The first save preserves it under the name
// preferences.json.damaged, with a number appended if that name exists already. A file that cannot be read is not
// replaced by any save. An empty file contains no values and does not count as damaged. Damaged or unreadable
// preferences are logged in one line at startup. Each failed save is also logged in one line.
//
// A thread saves the values, because a sync may take many seconds. set() only starts the save. The destructor waits at
// most `timeout` until everything is saved, and logs one line if that takes longer. The thread logs failed saves.
//
// Two processes that save at the same moment are not synchronized: the later save replaces the whole file.
class JsonPreferencesStore : public PreferencesStore {
  public:
    static constexpr std::chrono::seconds timeout{1};

    JsonPreferencesStore(std::string path, SystemLog& log);
    ~JsonPreferencesStore() override;
    JsonPreferencesStore(const JsonPreferencesStore&) = delete;
    JsonPreferencesStore& operator=(const JsonPreferencesStore&) = delete;

    std::optional<PreferenceValue> object(std::string_view key) const override;
    void set(std::string_view key, const PreferenceValue& value) override;

    // Waits until every save has succeeded or failed. Returns false if that takes longer than `atMost`.
    bool waitUntilSaved(std::chrono::nanoseconds atMost) { return saves_.wait(atMost); }

  private:
    class File;

    const std::string path_;
    SystemLog& log_;
    BackgroundSaves::Values values_;
    std::shared_ptr<File> file_;  // used only by the thread after the constructor has returned
    BackgroundSaves saves_;
};

}  // namespace kovra
