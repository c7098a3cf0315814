#include "helper/session/ActiveUser.h"

#include <gtest/gtest.h>
#include <time.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <system_error>

#include "tests/helper/Openings.h"
#include "tests/helper/PrivateMachine.h"
#include "tests/helper/RunUntil.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra::helper {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

TEST(ActiveUserTest, OwnsALocalActiveSessionOfClassUser) {
    const ForegroundSession session{1000, "user", "active", false};
    EXPECT_EQ(userAtTheMachine(session, 0), 1000U);
    EXPECT_EQ(userAtTheMachine(std::nullopt, 0), std::nullopt);
    for (const std::string kind : {"greeter", "lock-screen", "background", "manager", "user-early", "", "User"}) {
        EXPECT_EQ(userAtTheMachine(ForegroundSession{1000, kind, "active", false}, 0), std::nullopt) << kind;
    }
    for (const std::string state : {"online", "closing", "opening", "", "Active"}) {
        EXPECT_EQ(userAtTheMachine(ForegroundSession{1000, "user", state, false}, 0), std::nullopt) << state;
    }
    EXPECT_EQ(userAtTheMachine(ForegroundSession{1000, "user", "active", true}, 0), std::nullopt);
    EXPECT_EQ(userAtTheMachine(ForegroundSession{0, "user", "active", false}, 0), 0U);
}

TEST(ActiveUserTest, IsNobodyWhileAnotherTerminalIsShownThanThatOfTheSession) {
    const auto shown = [](unsigned terminal, unsigned shownTerminal) {
        return userAtTheMachine(ForegroundSession{1000, "user", "active", false, terminal}, shownTerminal);
    };
    EXPECT_EQ(shown(2, 2), 1000U);
    EXPECT_EQ(shown(2, 3), std::nullopt);
    EXPECT_EQ(shown(0, 3), 1000U);  // a session without a terminal
    EXPECT_EQ(shown(2, 0), 1000U);  // a kernel without terminals
}

// A writer of systemd-logind's files in the /run of a private machine. Like systemd-logind, it replaces each file
// atomically.
class LoginManager {
  public:
    LoginManager() {
        for (const std::string name : {"seats", "sessions", "users", "machines"}) {
            fs::create_directories("/run/systemd/" + name);
        }
    }
    static void session(const std::string& name, uid_t user, const std::string& state = "active",
                        const std::string& kind = "user", bool isRemote = false) {
        replace("sessions/" + name,
                "UID=" + std::to_string(user) + "\nUSER=somebody\nACTIVE=1\nIS_DISPLAY=1\nSTATE=" + state +
                    "\nREMOTE=" + (isRemote ? "1" : "0") + "\nTYPE=wayland\nCLASS=" + kind + "\nSEAT=seat0\n");
    }
    static void endSession(const std::string& name) { fs::remove("/run/systemd/sessions/" + name); }
    static void foreground(const std::string& session, uid_t user) {
        replace("seats/seat0", "IS_SEAT0=1\nCAN_GRAPHICAL=1\nACTIVE=" + session +
                                   "\nACTIVE_UID=" + std::to_string(user) + "\nSESSIONS=" + session + "\n");
    }
    // Makes the file of the seat unreadable, and readable again without an event.
    static void hideSeat() {
        fs::create_directory(hidden);
        fs::create_symlink(hidden, "/run/systemd/seats/seat0");
    }
    static void showSeat(const std::string& session) {
        fs::remove(hidden);
        writeFile(hidden, "IS_SEAT0=1\nACTIVE=" + session + "\nSESSIONS=" + session + "\n");
    }
    static void noForeground() { replace("seats/seat0", "IS_SEAT0=1\nCAN_GRAPHICAL=1\n"); }

  private:
    static constexpr const char* hidden = "/run/elsewhere";

    static void replace(const std::string& name, const std::string& text) {
        const std::string path = "/run/systemd/" + name;
        const std::string newPath = "/run/systemd/." + fs::path(name).filename().string();
        writeFile(newPath, text);
        fs::rename(newPath, path);
    }
};

class Listener {
  public:
    Listener() {
        user.onChange = [this] { ++changes_; };
    }
    // Returns whether this user becomes the active one within ten seconds, with exactly one notification.
    bool becomes(std::optional<uid_t> expected) {
        const auto end = std::chrono::steady_clock::now() + 10s;
        while (changes_ == 0 && std::chrono::steady_clock::now() < end) runFor(1ms);
        const bool once = changes_ == 1;
        changes_ = 0;
        return once && user.current() == expected;
    }
    bool staysSilent() {
        handleEvents(loop_);
        return changes_ == 0;
    }
    void handleOneEvent() { runFor(0ms); }
    // Returns whether the loop waits without using the processor. It would not if it left an event unread.
    bool sleeps() {
        const auto used = [] {
            timespec time{};
            ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
            return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
        };
        runFor(20ms);
        const auto before = used();
        runFor(200ms);
        return used() - before < 5ms;
    }

  private:
    void runFor(std::chrono::milliseconds time) {
        const auto over = loop_.after(time, [this] { loop_.stop(); });
        loop_.run();
    }

    Loop loop_;
    int changes_ = 0;

  public:
    ActiveUser user{loop_};
};

TEST(ActiveUserTest, IsReadAgainAfterItCouldNotBeRead) {
    inPrivateMachine([](uid_t) {
        const LoginManager manager;
        LoginManager::session("c1", 1000);
        LoginManager::hideSeat();
        Listener listener;
        EXPECT_EQ(listener.user.current(), std::nullopt);
        EXPECT_TRUE(listener.staysSilent());
        LoginManager::showSeat("c1");
        EXPECT_TRUE(listener.becomes(1000U));
        EXPECT_TRUE(listener.sleeps());
    });
}

TEST(ActiveUserTest, IsKnownAtTheStartAndFollowsEachSwitch) {
    inPrivateMachine([](uid_t) {
        LoginManager manager;
        manager.session("1", 1000);
        manager.session("2", 1001, "online");
        manager.foreground("1", 1000);
        Listener listener;
        EXPECT_EQ(listener.user.current(), 1000U);
        manager.session("1", 1000, "online");
        EXPECT_TRUE(listener.becomes(std::nullopt));
        manager.session("2", 1001);
        manager.foreground("2", 1001);
        EXPECT_TRUE(listener.becomes(1001));
        manager.session("c3", 110, "active", "greeter");
        manager.foreground("c3", 110);
        EXPECT_TRUE(listener.becomes(std::nullopt));
        manager.session("2", 1001);
        manager.foreground("2", 1001);
        EXPECT_TRUE(listener.becomes(1001));
        manager.noForeground();
        EXPECT_TRUE(listener.becomes(std::nullopt));
        EXPECT_TRUE(listener.sleeps());
    });
}

TEST(ActiveUserTest, IsNoUserOnceTheSessionIsClosingOrGone) {
    inPrivateMachine([](uid_t) {
        LoginManager manager;
        manager.session("1", 1000);
        manager.foreground("1", 1000);
        Listener listener;
        manager.session("1", 1000, "closing");
        EXPECT_TRUE(listener.becomes(std::nullopt));
        manager.session("1", 1000);
        EXPECT_TRUE(listener.becomes(1000));
        manager.endSession("1");
        EXPECT_TRUE(listener.becomes(std::nullopt));
        EXPECT_TRUE(listener.sleeps());
    });
}

TEST(ActiveUserTest, IsFoundAfterFilesWereMissingOrDamaged) {
    inPrivateMachine([](uid_t) {
        LoginManager manager;
        Listener listener;
        EXPECT_EQ(listener.user.current(), std::nullopt);
        manager.foreground("1", 1000);  // the file of session 1 is missing
        EXPECT_TRUE(listener.staysSilent());
        writeFile("/run/systemd/sessions/1", "UID=many\nSTATE\n\0\n");
        manager.foreground("1", 1000);
        EXPECT_TRUE(listener.staysSilent());
        manager.session("1", 1000, "active", "user", true);
        EXPECT_TRUE(listener.staysSilent());
        writeFile("/run/systemd/sessions/1", "UID=1000\nACTIVE=1\nSTATE=active\nCLASS=user\nSEAT=seat0\n");
        manager.foreground("1", 1000);  // the session's file has no REMOTE
        EXPECT_TRUE(listener.staysSilent());
        manager.session("1", 1000);
        EXPECT_TRUE(listener.becomes(1000));
    });
}

TEST(ActiveUserTest, IsNotReportedAgainIfUnchanged) {
    inPrivateMachine([](uid_t) {
        LoginManager manager;
        manager.session("1", 1000);
        manager.session("2", 1000);
        manager.session("3", 1001, "online", "user", true);
        manager.foreground("1", 1000);
        Listener listener;
        manager.foreground("2", 1000);
        manager.session("1", 1000, "online");
        manager.session("3", 1001, "closing", "user", true);
        manager.endSession("3");
        EXPECT_TRUE(listener.staysSilent());
        EXPECT_EQ(listener.user.current(), 1000U);
    });
}

TEST(ActiveUserTest, IsReadFewTimesWhileASessionsFileIsRewrittenWithoutEndAndTheLastChangeCounts) {
    inPrivateMachine([](uid_t) {
        LoginManager manager;
        manager.session("1", 1000);
        manager.foreground("1", 1000);
        Listener listener;
        const Openings readings("/run/systemd/seats/seat0");
        const auto begin = std::chrono::steady_clock::now();
        int looks = 0;
        int writes = 0;
        for (; std::chrono::steady_clock::now() - begin < 400ms || looks < 12; ++writes) {
            manager.session("2", 1001, "online", "user", true);
            listener.handleOneEvent();
            looks += readings.take();
        }
        const auto time = std::chrono::steady_clock::now() - begin;
        EXPECT_LE(looks, 10 + time / 50ms + 1) << writes << " writes";
        const auto since = std::chrono::steady_clock::now();
        manager.session("1", 1000, "online");
        EXPECT_TRUE(listener.becomes(std::nullopt));
        EXPECT_LT(std::chrono::steady_clock::now() - since, 1s);
    });
}

TEST(ActiveUserTest, IsNoticedAtOnceForAFewSwitchesInARow) {
    inPrivateMachine([](uid_t) {
        LoginManager manager;
        manager.session("1", 1000);
        manager.session("2", 1001);
        manager.foreground("1", 1000);
        Listener listener;
        const auto begin = std::chrono::steady_clock::now();
        for (int i = 0; i < 4; ++i) {
            manager.foreground("2", 1001);
            EXPECT_TRUE(listener.becomes(1001));
            manager.foreground("1", 1000);
            EXPECT_TRUE(listener.becomes(1000));
        }
        EXPECT_LT(std::chrono::steady_clock::now() - begin, 300ms);
    });
}

TEST(ActiveUserTest, NeedsALoginManager) {
    inPrivateMachine([](uid_t) {
        Loop loop;
        EXPECT_THROW(ActiveUser user(loop), std::system_error);
    });
}

}  // namespace
}  // namespace kovra::helper
