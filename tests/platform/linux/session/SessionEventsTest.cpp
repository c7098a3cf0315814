#include "BLE_kovra/platform/linux/session/SessionEvents.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>

#include "BLE_kovra/platform/linux/session/SdEventApplication.h"
#include "BLE_kovra/platform/posix/PosixFileSystem.h"
#include "tests/platform/linux/loop/Turns.h"
#include "tests/support/linux/PrivateBus.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;

// An application in session c2, a fake login manager, and the folder of the flag.
class SessionEventsTest : public testing::Test, private ApplicationDelegate {
  protected:
    SessionEventsTest() {
        writeFile(flag_, "off");
        sd_bus* bus = nullptr;
        EXPECT_GE(sd_bus_open_system(&bus), 0);
        login_.reset(bus);
        EXPECT_GE(sd_bus_request_name(bus, "org.freedesktop.login1", 0), 0);
    }

    // Runs the application. Calls the body as soon as the application receives signals of the login manager.
    void run(const std::function<void()>& body) {
        body_ = body;
        application_.run(*this);
    }
    void removeSession() {
        emit("/org/freedesktop/login1", "org.freedesktop.login1.Manager", "SessionRemoved", "so", "c2", "/");
    }
    void resume() { emit("/org/freedesktop/login1", "org.freedesktop.login1.Manager", "PrepareForSleep", "b", 0); }
    void activate() {
        emit("/org/freedesktop/login1/session/c2", "org.freedesktop.DBus.Properties", "PropertiesChanged", "sa{sv}as",
             "org.freedesktop.login1.Session", 1, "Active", "b", 1, 0);
    }
    const std::filesystem::path& flag() const { return flag_; }
    void removeFlag() { EXPECT_TRUE(std::filesystem::remove(flag_)); }
    void handOver() {
        writeFile(flag_.string() + ".new", "off");
        std::filesystem::rename(flag_.string() + ".new", flag_);
    }
    // Waits up to 20 s until `last` is the last recorded action. Returns whether it is. doneAll_ then contains all
    // actions since the previous call.
    bool does(const std::string& last) {
        const bool isDone = turnUntil(loop_, [&] { return done_.ends_with(last); });
        doneAll_ = std::exchange(done_, {});
        return isDone;
    }
    std::string doneWithin(std::chrono::milliseconds time) {
        turnsWithin(loop_, time);
        return std::exchange(done_, {});
    }

    std::string doneAll_;  // the actions that the last call of does() found

  private:
    template <typename... Values>
    void emit(const char* path, const char* interface, const char* signal, const char* types, Values... values) {
        EXPECT_GE(sd_bus_emit_signal(login_.get(), path, interface, signal, types, values...), 0);
        EXPECT_GE(sd_bus_flush(login_.get()), 0);
    }
    void applicationDidFinishLaunching() override {
        // Repeats the signal, because the bus installs a match some time after the program requests it.
        for (int tries = 0; done_.empty() && tries < 500; ++tries) {
            resume();
            turnUntil(loop_, [this] { return !done_.empty(); }, 20ms);
        }
        turnsWithin(loop_, 100ms);
        done_.clear();
        body_();
        application_.terminate();
    }
    void applicationDidReopen() override {}
    void applicationDidResume() override { done_ += "decides "; }
    void applicationShouldPerform(ApplicationAction) override {}
    ApplicationFacts facts() const override { return {}; }
    void applicationWillTerminate() override { done_ += "terminates "; }

    PrivateBus daemon_{"DBUS_SYSTEM_BUS_ADDRESS"};
    BusHandle login_;
    const TempFolder folder_;
    const std::filesystem::path flag_ = folder_ / "state";
    std::function<void()> body_;
    std::string done_;
    SdEventLoop loop_;
    SystemBus bus_{loop_};
    SdEventApplication application_{loop_};
    SessionEvents events_{loop_, bus_, "c2", flag_, application_, [this] { done_ += "resynchronizes "; }};
};

TEST_F(SessionEventsTest, TerminateTheApplicationWhenTheSessionEnds) {
    run([this] {
        removeSession();
        EXPECT_TRUE(does("terminates "));
    });
}

TEST_F(SessionEventsTest, CauseADecisionWhenTheFlagWasHandedOver) {
    run([this] {
        handOver();
        EXPECT_TRUE(does("decides "));
        EXPECT_EQ(doneAll_, "decides ");
    });
}

TEST_F(SessionEventsTest, CauseNoDecisionWhenTheApplicationItselfCreatesTheFlag) {
    run([this] {
        removeFlag();
        EXPECT_TRUE(PosixFileSystem().writeWholeFile(flag().string(), "on"));
        EXPECT_EQ(doneWithin(50ms), "");
        handOver();
        EXPECT_TRUE(does("decides "));
        EXPECT_EQ(doneAll_, "decides ");
    });
}

TEST_F(SessionEventsTest, CauseADecisionWhenTheSessionIsActiveAgain) {
    run([this] {
        activate();
        EXPECT_TRUE(does("decides "));
        EXPECT_EQ(doneAll_, "decides ");
    });
}

TEST_F(SessionEventsTest, CompareTheDevicesBeforeTheDecisionAfterAResume) {
    run([this] {
        resume();
        EXPECT_TRUE(does("decides "));
        EXPECT_EQ(doneAll_, "resynchronizes decides ");
    });
}

TEST_F(SessionEventsTest, CauseNothingByThemselves) {
    run([this] { EXPECT_EQ(doneWithin(50ms), ""); });
}

}  // namespace
}  // namespace kovra
