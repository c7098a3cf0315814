#pragma once

#include <pthread.h>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "BLE_kovra/platform/PreferencesStore.h"

namespace kovra {

// Saves values in a thread, so that a disk that hangs does not delay the main thread. The saving thread receives copies
// and runs only while there is something to save.
class BackgroundSaves {
  public:
    using Values = std::map<std::string, PreferenceValue, std::less<>>;
    // Runs in the thread, or in begin() if no thread can be started. May take any time. Returns 0 or an errno value.
    using Save = std::function<int(const Values&)>;
    // Runs after a save that failed, in the same thread as the save. Is not called after the BackgroundSaves has been
    // destroyed.
    using Failed = std::function<void(int error)>;

    BackgroundSaves(Save save, Failed failed);
    // Does not wait for a save. A save that hangs continues until it completes or the process ends.
    ~BackgroundSaves();
    BackgroundSaves(const BackgroundSaves&) = delete;
    BackgroundSaves& operator=(const BackgroundSaves&) = delete;

    // Starts to save the value. While a save runs, the newest value of each key is stored for the next save.
    void begin(std::string_view key, const PreferenceValue& value);

    // Waits until no save is running or due. Returns false if that takes longer than `atMost`.
    bool wait(std::chrono::nanoseconds atMost);

  private:
    struct Shared;
    static void run(Shared& shared);

    std::shared_ptr<Shared> shared_;
    std::optional<pthread_t> thread_;  // it runs, or it has finished and is not joined yet
};

}  // namespace kovra
