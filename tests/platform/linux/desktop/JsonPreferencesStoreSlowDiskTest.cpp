// Tests of the preferences on a disk that takes long to sync. A change does not wait for the disk. The end of the
// program waits for at most one second.

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "tests/platform/linux/desktop/HangingSync.h"
#include "tests/platform/linux/desktop/JsonPreferencesStoreFixture.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;

class JsonPreferencesStoreSlowDiskTest : public PreferencesFixture {
  protected:
    JsonPreferencesStoreSlowDiskTest() {
        writeFile(path_, "{}\n");
        syncsHang = true;
    }
    ~JsonPreferencesStoreSlowDiskTest() override { syncsHang = false; }

    void expectFile(const std::string& expected) {
        const auto end = std::chrono::steady_clock::now() + 60s;
        while (text() != expected && std::chrono::steady_clock::now() < end) std::this_thread::sleep_for(5ms);
        EXPECT_EQ(text(), expected);
    }
    const std::string saved_ = "{\n  \"isEnabled\": false\n}\n";
};

TEST_F(JsonPreferencesStoreSlowDiskTest, DoesNotDelayTheUser) {
    JsonPreferencesStore store(path_, log_);
    store.set("isEnabled", true);
    store.set("isEnabled", false);
    EXPECT_EQ(store.object("isEnabled"), PreferenceValue(false));
    EXPECT_EQ(text(), "{}\n");
    syncsHang = false;
    EXPECT_TRUE(store.waitUntilSaved(60s));
    EXPECT_EQ(text(), saved_);
    EXPECT_TRUE(log_.lines.empty());
}

TEST_F(JsonPreferencesStoreSlowDiskTest, DelaysTheEndByOneSecondAtMostAndIsLoggedThen) {
    const auto begin = std::chrono::steady_clock::now();
    {
        JsonPreferencesStore store(path_, log_);
        store.set("isEnabled", false);
    }
    const auto took = std::chrono::steady_clock::now() - begin;
    EXPECT_GE(took, 1s);
    EXPECT_LT(took, 10s);  // one second, and a margin for a busy machine
    EXPECT_EQ(log_.lines, std::vector<std::string>{"ble-kovra: настройки (" + path_ +
                                                   ") не сохранены за 1 с, программа их не дожидается"});
    syncsHang = false;
    expectFile(saved_);  // the thread goes on saving while the process runs
}

TEST_F(JsonPreferencesStoreSlowDiskTest, IsWaitedForAtTheEndIfItAnswersInTime) {
    std::thread disk([] {
        std::this_thread::sleep_for(50ms);
        syncsHang = false;
    });
    {
        JsonPreferencesStore store(path_, log_);
        store.set("isEnabled", false);
    }
    EXPECT_EQ(text(), saved_);
    EXPECT_TRUE(log_.lines.empty());
    disk.join();
}

}  // namespace
}  // namespace kovra
