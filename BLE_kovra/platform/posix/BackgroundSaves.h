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

// Saves values in a thread, so that a disk that hangs delays nobody else. The thread receives copies and runs only
// while there is something to save. Its stack is small, because pages that it has used stay with the process.
class BackgroundSaves {
  public:
    using Values = std::map<std::string, PreferenceValue, std::less<>>;
    // Runs in the thread and may take forever. Returns 0 or an errno value.
    using Save = std::function<int(const Values&)>;
    // Runs in the thread after a save that failed, but never after the end of the BackgroundSaves.
    using Failed = std::function<void(int error)>;

    BackgroundSaves(Save save, Failed failed);
    // Does not wait. A save that hangs goes on for as long as the process runs.
    ~BackgroundSaves();
    BackgroundSaves(const BackgroundSaves&) = delete;
    BackgroundSaves& operator=(const BackgroundSaves&) = delete;

    // Begins to save the value. While a save runs, values are collected for the next one, the last one of each key.
    void begin(std::string_view key, const PreferenceValue& value);

    // Waits until everything is saved. Returns false if that takes longer.
    bool wait(std::chrono::nanoseconds atMost);

  private:
    struct Shared;
    static std::optional<pthread_t> startThread(const std::shared_ptr<Shared>& shared);
    static void* runThread(void* context);
    static void run(Shared& shared);

    std::shared_ptr<Shared> shared_;
    std::optional<pthread_t> thread_;  // it is running, or it has finished and was not joined yet
};

}  // namespace kovra
