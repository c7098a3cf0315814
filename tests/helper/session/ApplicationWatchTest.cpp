#include "helper/session/ApplicationWatch.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <string>
#include <utility>

#include "helper/Descriptor.h"
#include "helper/session/ProcessStatus.h"
#include "tests/helper/AsRoot.h"
#include "tests/helper/BytesRead.h"
#include "tests/helper/PrivateMachine.h"
#include "tests/helper/ProcessName.h"
#include "tests/helper/RunUntil.h"
#include "tests/helper/Users.h"

namespace kovra::helper {
namespace {

using namespace std::chrono_literals;

// A child process with this name and these user IDs. It sleeps until it is killed.
class Process {
  public:
    explicit Process(const std::string& name, uid_t real, uid_t effective) {
        int started[2];
        EXPECT_EQ(::pipe(started), 0);
        number_ = ::fork();
        if (number_ == 0) {
            takeName(name);
            if (::setresuid(real, effective, effective) != 0) ::_exit(1);
            EXPECT_EQ(::write(started[1], "x", 1), 1);
            while (true) ::pause();
        }
        ::close(started[1]);
        char ready = 0;
        EXPECT_EQ(::read(started[0], &ready, 1), 1);
        ::close(started[0]);
    }
    explicit Process(uid_t user, const std::string& name = "ble-kovra") : Process(name, user, user) {}
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    ~Process() {
        kill();
        ::waitpid(number_, nullptr, 0);
    }

    void signal(int which) const { ::kill(number_, which); }
    // Kills the process, which stays a zombie.
    void kill() const {
        signal(SIGKILL);
        siginfo_t how{};
        ::waitid(P_PID, static_cast<id_t>(number_), &how, WEXITED | WNOWAIT);
    }

  private:
    pid_t number_ = -1;
};

class Rig {
  public:
    Rig() {
        watch.onChange = [this] {
            ++changes_;
            loop_.stop();
        };
    }
    bool gotChange() {
        runFor(10s);
        return std::exchange(changes_, 0) == 1;
    }
    bool gotNothing() {
        handleEvents(loop_);
        return changes_ == 0;
    }
    bool gotNothingFor(std::chrono::milliseconds time) {
        runFor(time);
        return changes_ == 0;
    }

  private:
    void runFor(std::chrono::milliseconds time) {
        const auto over = loop_.after(time, [this] { loop_.stop(); });
        loop_.run();
    }

    Loop loop_;
    int changes_ = 0;

  public:
    ApplicationWatch watch{loop_};
};

TEST(ApplicationWatchTest, ReportsTheEndOfTheApplicationHoweverItEnds) {
    inPrivateMachine([](uid_t user) {
        for (const int signal : {SIGKILL, SIGTERM, SIGABRT}) {
            Rig rig;
            EXPECT_FALSE(rig.watch.isRunning(user));
            const Process application(user);
            EXPECT_TRUE(rig.watch.isRunning(user));
            EXPECT_TRUE(rig.watch.isRunning(user));
            EXPECT_TRUE(rig.gotNothing());
            application.signal(signal);
            EXPECT_TRUE(rig.gotChange());
            EXPECT_FALSE(rig.watch.isRunning(user));  // a zombie counts as ended
            EXPECT_TRUE(rig.gotNothing());
        }
    });
}

TEST(ApplicationWatchTest, WatchesAnotherApplicationOfTheUserNext) {
    inPrivateMachine([](uid_t user) {
        Rig rig;
        const Process one(user);
        const Process other(user);
        EXPECT_TRUE(rig.watch.isRunning(user));
        one.kill();
        EXPECT_TRUE(rig.gotNothing());
        EXPECT_TRUE(rig.watch.isRunning(user));
        other.kill();
        EXPECT_TRUE(rig.gotChange());
        EXPECT_FALSE(rig.watch.isRunning(user));
    });
}

TEST(ApplicationWatchTest, IgnoresProcessesWithOtherNames) {
    inPrivateMachine([](uid_t user) {
        Rig rig;
        for (const std::string name : {"ble-kovra-ui", "ble-kovra-helper", "ble-kovr", "xble-kovra", "BLE-kovra", ""}) {
            const Process process(user, name);
            EXPECT_FALSE(rig.watch.isRunning(user)) << name;
        }
    });
}

TEST(ApplicationWatchTest, IgnoresApplicationsOfOtherUsers) {
    inPrivateMachine([](uid_t user) {
        Rig rig;
        const Process application(user);
        EXPECT_FALSE(rig.watch.isRunning(bob));
        EXPECT_TRUE(rig.watch.isRunning(user));
        EXPECT_FALSE(rig.watch.isRunning(bob));
        EXPECT_FALSE(rig.watch.isRunning(user + 1));
        application.kill();
        EXPECT_TRUE(rig.gotNothing());
    });
}

TEST(ApplicationWatchTest, IgnoresProcessesThatActForAnotherUser) {
    runAsRoot([] {
        inPrivateMachine([](uid_t) {
            Rig rig;
            const Process actsForRoot("ble-kovra", bob, 0);
            const Process rootActs("ble-kovra", 0, bob);
            EXPECT_FALSE(rig.watch.isRunning(bob));
            EXPECT_FALSE(rig.watch.isRunning(0));
        });
    });
}

TEST(ApplicationWatchTest, CountsAStoppedProcessAsRunningAndAZombieAsEnded) {
    inPrivateMachine([](uid_t user) {
        Rig rig;
        const Process application(user);
        application.signal(SIGSTOP);
        EXPECT_TRUE(rig.watch.isRunning(user));
        EXPECT_TRUE(rig.gotNothing());
        application.kill();
        EXPECT_FALSE(rig.watch.isRunning(user));
        EXPECT_TRUE(rig.gotNothing());
    });
}

TEST(ApplicationWatchTest, DoesNotReportTheEndAfterARelease) {
    inPrivateMachine([](uid_t user) {
        Rig rig;
        const Process application(user);
        EXPECT_TRUE(rig.watch.isRunning(user));
        rig.watch.release();
        application.kill();
        EXPECT_TRUE(rig.gotNothing());
        EXPECT_FALSE(rig.watch.isRunning(user));
    });
}

TEST(ApplicationWatchTest, ReleasesAProcessThatHasBecomeAnotherProgram) {
    inPrivateMachine([](uid_t user) {
        takeName("ble-kovra");
        Rig rig;
        EXPECT_TRUE(rig.watch.isRunning(0));
        takeName("another");
        EXPECT_FALSE(rig.watch.isRunning(0));
        const Process application(user);
        EXPECT_TRUE(rig.watch.isRunning(user));
    });
}

// Makes the kernel give this PID to the next process of this PID namespace.
void numberNext(pid_t number) { writeFile("/proc/sys/kernel/ns_last_pid", std::to_string(number - 1)); }

TEST(ApplicationWatchTest, WatchesTheApplicationAndNotTheProgramThatItIsStarting) {
    inPrivateMachine([](uid_t user) {
        Rig rig;
        int becomes[2];
        ASSERT_EQ(::pipe(becomes), 0);
        numberNext(500);
        const pid_t application = ::fork();
        if (application == 0) {
            takeName("ble-kovra");
            numberNext(400);  // so that /proc lists the next process first
            const pid_t started = ::fork();
            if (::setresuid(user, user, user) != 0) ::_exit(1);
            if (started == 0) {
                char now = 0;
                takeName("ble-kovra");
                if (::read(becomes[0], &now, 1) == 1) takeName("xdg-open");
            }
            while (true) ::pause();
        }
        const auto is = [&](pid_t process, const std::string& name) {
            for (int tries = 0; tries < 5'000; ++tries) {
                const auto status = processStatus(process);
                if (status && status->name == name && status->effectiveUser == user) return true;
                ::usleep(1'000);
            }
            return false;
        };
        ASSERT_TRUE(is(500, "ble-kovra") && is(400, "ble-kovra"));
        EXPECT_TRUE(rig.watch.isRunning(user));
        EXPECT_EQ(::write(becomes[1], "x", 1), 1);
        ASSERT_TRUE(is(400, "xdg-open"));
        ::kill(application, SIGKILL);
        EXPECT_TRUE(rig.gotChange());
    });
}

// An application that is suspended by vfork() while it starts a program. The child has the application's name and
// memory until executeProgram() is called.
class ApplicationThatStartsAProgram {
  public:
    explicit ApplicationThatStartsAProgram(uid_t user) {
        int started[2];
        int becomes[2];
        EXPECT_EQ(::pipe2(started, O_CLOEXEC), 0);
        EXPECT_EQ(::pipe2(becomes, O_CLOEXEC), 0);
        becomes_ = Descriptor(becomes[1]);
        number_ = ::fork();
        if (number_ == 0) {
            takeName("ble-kovra");
            if (::setresuid(user, user, user) != 0) ::_exit(1);
            if (::vfork() == 0) {
                char now = 'x';
                if (::write(started[1], &now, 1) == 1 && ::read(becomes[0], &now, 1) == 1) {
                    ::execl("/bin/sleep", "sleep", "1000", nullptr);
                }
            }
            ::_exit(1);
        }
        char ready = 0;
        EXPECT_EQ(::read(started[0], &ready, 1), 1);
        for (const int end : {started[0], started[1], becomes[0]}) ::close(end);
    }

    void kill() const {
        ::kill(number_, SIGKILL);
        EXPECT_EQ(::waitpid(number_, nullptr, 0), number_);
    }
    void executeProgram() const { EXPECT_EQ(::write(becomes_.number(), "x", 1), 1); }

  private:
    pid_t number_ = -1;
    Descriptor becomes_;
};

TEST(ApplicationWatchTest, RecognizesTheProgramThatAKilledApplicationWasStarting) {
    inPrivateMachine([](uid_t user) {
        // The child executes the program before the first check of ApplicationWatch, or after it, as it would from a
        // slow disk.
        for (const auto delay : {10ms, 400ms}) {
            Rig rig;
            const ApplicationThatStartsAProgram application(user);
            EXPECT_TRUE(rig.watch.isRunning(user));
            application.kill();
            EXPECT_TRUE(rig.gotNothingFor(delay));
            application.executeProgram();
            EXPECT_TRUE(rig.gotChange());
            EXPECT_FALSE(rig.watch.isRunning(user));
        }
    });
}

TEST(ApplicationWatchTest, DoesNotCheckAgainAfterARelease) {
    inPrivateMachine([](uid_t user) {
        Rig rig;
        const ApplicationThatStartsAProgram application(user);
        EXPECT_TRUE(rig.watch.isRunning(user));
        application.kill();
        EXPECT_TRUE(rig.gotNothingFor(10ms));
        rig.watch.release();
        application.executeProgram();
        EXPECT_TRUE(rig.gotNothingFor(300ms));
    });
}

// Returns the number of bytes that one call of isRunning() reads.
long costOf(Rig& rig, uid_t user) {
    const long before = bytesRead();
    rig.watch.isRunning(user);
    return bytesRead() - before;
}

TEST(ApplicationWatchTest, SearchesAllProcessesAtMostTwiceASecondAfterAFewTimes) {
    inPrivateMachine([](uid_t user) {
        Rig rig;
        const Process other(user, "another");
        const long withSearch = costOf(rig, user);
        const auto begin = std::chrono::steady_clock::now();
        int searches = 1;
        for (int i = 0; i < 300; ++i) searches += costOf(rig, user) > withSearch / 2 ? 1 : 0;
        const auto time = std::chrono::steady_clock::now() - begin;
        EXPECT_GE(searches, 5);
        EXPECT_LE(searches, 5 + time / 500ms + 1);
    });
}

TEST(ApplicationWatchTest, ReportsAnApplicationThatStartsWhileSearchesArePutOff) {
    inPrivateMachine([](uid_t user) {
        Rig rig;
        for (int i = 0; i < 20; ++i) EXPECT_FALSE(rig.watch.isRunning(user));
        const Process application(user);
        const auto started = std::chrono::steady_clock::now();
        if (!rig.watch.isRunning(user)) {
            EXPECT_TRUE(rig.gotChange());
        }
        EXPECT_LT(std::chrono::steady_clock::now() - started, 1s);
        EXPECT_TRUE(rig.watch.isRunning(user));
        // The application that was found late is watched like any other.
        application.kill();
        EXPECT_TRUE(rig.gotChange());
    });
}

TEST(ApplicationWatchTest, ForgetsASearchThatWasPutOffAtARelease) {
    inPrivateMachine([](uid_t user) {
        Rig rig;
        for (int i = 0; i < 20; ++i) EXPECT_FALSE(rig.watch.isRunning(user));
        rig.watch.release();
        const Process application(user);
        EXPECT_TRUE(rig.gotNothingFor(600ms));
    });
}

}  // namespace
}  // namespace kovra::helper
