#include "BLE_kovra/platform/linux/session/TimeLimitedLoginService.h"

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <string>

#include "tests/support/posix/TempFolder.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;

// A login service whose disk a test can make hang, for sixty seconds at most.
class HangingService : public FileLoginService {
  public:
    LoginStatus read(const PathVisitor& visitor) const override {
        if (file) visitor(*file);
        wait();
        if (hasNoMemory) throw std::bad_alloc();
        return current;
    }
    Outcome registerApplication() override { return change(LoginStatus::enabled); }
    Outcome unregisterApplication() override { return change(LoginStatus::notRegistered); }

    void hang() {
        const std::lock_guard lock(mutex_);
        hangs_ = true;
    }
    // Lets all calls continue, and waits until they have read `current`.
    void resume() {
        std::unique_lock lock(mutex_);
        hangs_ = false;
        changed_.notify_all();
        EXPECT_TRUE(changed_.wait_for(lock, 60s, [this] { return waiting_ == 0; }));
    }
    int calls() const {
        const std::lock_guard lock(mutex_);
        return calls_;
    }

    LoginStatus current = LoginStatus::notFound;
    bool refuses = false;
    bool hasNoMemory = false;
    std::optional<std::string> file;  // on which the status depends, on a disk that does not hang

  private:
    Outcome change(LoginStatus status) {
        wait();
        if (refuses) return Outcome::failure("no room");
        current = status;
        return Outcome::success();
    }
    void wait() const {
        std::unique_lock lock(mutex_);
        ++calls_;
        ++waiting_;
        changed_.wait_for(lock, 60s, [this] { return !hangs_; });
        --waiting_;
        changed_.notify_all();
    }

    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    mutable int calls_ = 0;
    mutable int waiting_ = 0;
    bool hangs_ = false;
};

class TimeLimitedLoginServiceTest : public testing::Test {
  protected:
    ~TimeLimitedLoginServiceTest() override { disk_->resume(); }
    // Makes the disk hang, and the limits short.
    void hang() {
        disk_->hang();
        restart({.read = 1ms, .change = 1ms});
    }
    void restart(TimeLimitedLoginService::Limits limits) {
        service_ = std::make_unique<TimeLimitedLoginService>(disk_, limits);
    }
    // On a busy machine a read may take longer than its limit.
    void waitForStatus(LoginStatus status) const {
        const auto end = std::chrono::steady_clock::now() + 60s;
        while (service_->status() != status) ASSERT_LT(std::chrono::steady_clock::now(), end);
    }
    static auto threads() {
        return std::distance(std::filesystem::directory_iterator("/proc/self/task"),
                             std::filesystem::directory_iterator());
    }

    const std::shared_ptr<HangingService> disk_ = std::make_shared<HangingService>();
    // Longer than any machine needs.
    std::unique_ptr<TimeLimitedLoginService> service_ =
        std::make_unique<TimeLimitedLoginService>(disk_, TimeLimitedLoginService::Limits{.read = 60s, .change = 60s});
};

TEST_F(TimeLimitedLoginServiceTest, ReadsTheStatusAtEachCall) {
    for (const auto status : {LoginStatus::enabled, LoginStatus::requiresApproval, LoginStatus::notFound}) {
        disk_->current = status;
        EXPECT_EQ(service_->status(), status);
    }
    EXPECT_EQ(disk_->calls(), 3);
}

TEST_F(TimeLimitedLoginServiceTest, ReadsNothingWhileItsFilesAreUnchanged) {
    const TempFolder folder;
    disk_->file = folder / "entry";
    disk_->current = LoginStatus::notFound;
    for (int decision = 0; decision < 3; ++decision) EXPECT_EQ(service_->status(), LoginStatus::notFound);
    EXPECT_EQ(disk_->calls(), 1);
    writeFile(*disk_->file, "");
    disk_->current = LoginStatus::enabled;
    EXPECT_EQ(service_->status(), LoginStatus::enabled);
}

TEST_F(TimeLimitedLoginServiceTest, ReturnsTheOutcomeOfEachChange) {
    EXPECT_TRUE(service_->registerApplication());
    EXPECT_EQ(disk_->current, LoginStatus::enabled);
    EXPECT_TRUE(service_->unregisterApplication());
    EXPECT_EQ(disk_->current, LoginStatus::notRegistered);
    disk_->refuses = true;
    EXPECT_EQ(service_->registerApplication().reason(), "no room");
}

TEST_F(TimeLimitedLoginServiceTest, LeavesNoThreadBehind) {
    const auto before = threads();
    service_->status();
    EXPECT_EQ(threads(), before);
}

TEST_F(TimeLimitedLoginServiceTest, ReturnsTheLastStatusWhileTheDiskHangsAndReadsNothingMore) {
    restart({.read = 10ms, .change = 10ms});
    disk_->current = LoginStatus::enabled;
    waitForStatus(LoginStatus::enabled);
    const int before = disk_->calls();
    disk_->hang();
    disk_->current = LoginStatus::notRegistered;
    for (int decision = 0; decision < 100; ++decision) EXPECT_EQ(service_->status(), LoginStatus::enabled);
    EXPECT_LE(disk_->calls(), 1 + before);
}

TEST_F(TimeLimitedLoginServiceTest, ReadsAgainOnceTheDiskResponds) {
    hang();
    disk_->current = LoginStatus::enabled;
    EXPECT_EQ(service_->status(), LoginStatus::notRegistered);
    disk_->resume();
    waitForStatus(LoginStatus::enabled);
}

TEST_F(TimeLimitedLoginServiceTest, RefusesChangesWhileTheDiskHangs) {
    hang();
    const std::string reason = std::strerror(ETIMEDOUT);
    EXPECT_EQ(service_->registerApplication().reason(), reason);
    EXPECT_EQ(service_->unregisterApplication().reason(), reason);
    EXPECT_LE(disk_->calls(), 1);
}

TEST_F(TimeLimitedLoginServiceTest, DoesNotWaitForTheDiskAtItsEnd) {
    hang();
    service_->status();
    service_.reset();
    disk_->resume();
}

TEST_F(TimeLimitedLoginServiceTest, KeepsTheLastStatusIfThereIsNoMemory) {
    disk_->current = LoginStatus::enabled;
    ASSERT_EQ(service_->status(), LoginStatus::enabled);
    disk_->hasNoMemory = true;
    EXPECT_EQ(service_->status(), LoginStatus::enabled);
}

}  // namespace
}  // namespace kovra
