#include "BLE_kovra/platform/posix/BackgroundSaves.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/syscall.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <mutex>
#include <new>
#include <thread>
#include <vector>

#include "tests/support/linux/FailingCalls.h"
#include "tests/support/posix/InAChild.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;
using Values = BackgroundSaves::Values;

// A disk that a test can make hang, for ten seconds at most. Each save is recorded when it begins.
class Disk {
  public:
    int save(const Values& values) {
        std::unique_lock lock(mutex_);
        begun_.push_back(values);
        changed_.notify_all();
        changed_.wait_for(lock, 10s, [this] { return !hangs_; });
        if (hasNoMemory) throw std::bad_alloc();
        return error;
    }
    void hang() {
        const std::lock_guard lock(mutex_);
        hangs_ = true;
    }
    void resume() {
        const std::lock_guard lock(mutex_);
        hangs_ = false;
        changed_.notify_all();
    }
    void waitForSaves(std::size_t count) {
        std::unique_lock lock(mutex_);
        EXPECT_TRUE(changed_.wait_for(lock, 60s, [&] { return begun_.size() >= count; }));
    }
    std::vector<Values> begun() {
        const std::lock_guard lock(mutex_);
        return begun_;
    }

    std::atomic<int> error = 0;
    std::atomic<bool> hasNoMemory = false;

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Values> begun_;
    bool hangs_ = false;
};

class BackgroundSavesTest : public testing::Test {
  protected:
    ~BackgroundSavesTest() override {
        disk_->resume();
        if (saves_) saves_->wait(60s);
    }
    static auto threads() {
        return std::distance(std::filesystem::directory_iterator("/proc/self/task"),
                             std::filesystem::directory_iterator());
    }

    const std::shared_ptr<Disk> disk_ = std::make_shared<Disk>();
    std::atomic<int> failures_ = 0;
    std::unique_ptr<BackgroundSaves> saves_ = std::make_unique<BackgroundSaves>(
        [disk = disk_](const Values& values) { return disk->save(values); }, [this](int) { ++failures_; });
};

TEST_F(BackgroundSavesTest, SavesEachValue) {
    saves_->begin("a", 1.0);
    EXPECT_TRUE(saves_->wait(60s));
    saves_->begin("a", 2.0);
    EXPECT_TRUE(saves_->wait(60s));
    EXPECT_EQ(disk_->begun(), (std::vector<Values>{{{"a", 1.0}}, {{"a", 2.0}}}));
    EXPECT_EQ(failures_, 0);
}

TEST_F(BackgroundSavesTest, SavesTheLastValueOfEachKeyAfterAHang) {
    disk_->hang();
    saves_->begin("a", 1.0);
    disk_->waitForSaves(1);
    saves_->begin("a", 2.0);
    saves_->begin("b", 3.0);
    saves_->begin("a", 4.0);
    EXPECT_FALSE(saves_->wait(10ms));
    disk_->resume();
    EXPECT_TRUE(saves_->wait(60s));
    EXPECT_EQ(disk_->begun(), (std::vector<Values>{{{"a", 1.0}}, {{"a", 4.0}, {"b", 3.0}}}));
}

TEST_F(BackgroundSavesTest, ReportsEachFailure) {
    disk_->error = EROFS;
    saves_->begin("a", 1.0);
    EXPECT_TRUE(saves_->wait(60s));
    saves_->begin("a", 1.0);
    EXPECT_TRUE(saves_->wait(60s));
    EXPECT_EQ(failures_, 2);
}

TEST_F(BackgroundSavesTest, ReportsASaveThatRunsOutOfMemory) {
    disk_->hasNoMemory = true;
    saves_->begin("a", 1.0);
    EXPECT_TRUE(saves_->wait(60s));
    EXPECT_EQ(failures_, 1);
}

TEST_F(BackgroundSavesTest, GoesOnIfAReportRunsOutOfMemory) {
    BackgroundSaves saves([](const Values&) { return EROFS; },
                          [this](int) {
                              ++failures_;
                              throw std::bad_alloc();
                          });
    saves.begin("a", 1.0);
    EXPECT_TRUE(saves.wait(60s));
    saves.begin("a", 2.0);
    EXPECT_TRUE(saves.wait(60s));
    EXPECT_EQ(failures_, 2);
}

TEST_F(BackgroundSavesTest, ReportsNothingAfterItsEnd) {
    disk_->error = EROFS;
    disk_->hang();
    saves_->begin("a", 1.0);
    disk_->waitForSaves(1);
    saves_->begin("a", 2.0);
    saves_.reset();
    disk_->resume();
    disk_->waitForSaves(2);
    EXPECT_EQ(failures_, 0);
}

TEST_F(BackgroundSavesTest, KeepsNoStackOfAThreadThatHasEnded) {
    const auto mappings = [] {
        std::ifstream maps("/proc/self/maps");
        return std::count(std::istreambuf_iterator<char>(maps), {}, '\n');
    };
    long before = 0;
    for (int i = 0; i < 60; ++i) {
        saves_->begin("a", 1.0);
        EXPECT_TRUE(saves_->wait(60s));
        if (i == 20) before = mappings();
    }
    EXPECT_LT(mappings(), before + 20);
}

TEST_F(BackgroundSavesTest, GivesItsThreadASmallStack) {
    std::size_t size = 0;
    BackgroundSaves saves(
        [&](const Values&) {
            pthread_attr_t attributes;
            ::pthread_getattr_np(::pthread_self(), &attributes);
            ::pthread_attr_getstacksize(&attributes, &size);
            return ::pthread_attr_destroy(&attributes);
        },
        {});
    saves.begin("a", 1.0);
    EXPECT_TRUE(saves.wait(60s));
    EXPECT_EQ(size, 256U * 1024);
}

TEST_F(BackgroundSavesTest, SavesAtOnceIfNoThreadCanBeStarted) {
    EXPECT_TRUE(holdsInAChild([this] {
        failAt(SYS_clone3, {EAGAIN});
        saves_->begin("a", 1.0);
        return disk_->begun().size() == 1;
    }));
}

TEST_F(BackgroundSavesTest, HasNoThreadWhileThereIsNothingToSave) {
    const auto before = threads();
    saves_->begin("a", 1.0);
    EXPECT_TRUE(saves_->wait(60s));
    saves_.reset();
    // The kernel lists a thread for a moment after it was joined.
    const auto end = std::chrono::steady_clock::now() + 60s;
    while (threads() > before && std::chrono::steady_clock::now() < end) std::this_thread::sleep_for(1ms);
    EXPECT_LE(threads(), before);
}

}  // namespace
}  // namespace kovra
