#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <string>

#include "helper/Descriptor.h"
#include "helper/session/ProcessStatus.h"
#include "tests/helper/PrivateMachine.h"
#include "tests/helper/ProcessName.h"
#include "tests/helper/session/ApplicationWatchRig.h"
#include "tests/helper/session/WaitingProcess.h"

// An application that starts a program. Until it is executed, the child looks like another application.

namespace kovra::helper {
namespace {

using namespace std::chrono_literals;

TEST(ApplicationWatchStartedProgramTest, WatchesTheApplicationAndNotTheProgramThatItIsStarting) {
    inPrivateMachine([](uid_t user) {
        ApplicationWatchRig rig;
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
        EXPECT_TRUE(rig.watch.startOf(user));
        EXPECT_EQ(::write(becomes[1], "x", 1), 1);
        ASSERT_TRUE(is(400, "xdg-open"));
        ::kill(application, SIGKILL);
        EXPECT_TRUE(rig.gotChange());
    });
}

// An application that is suspended by vfork() while it starts a program. The child has the application's name and
// memory until executeProgram().
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

TEST(ApplicationWatchStartedProgramTest, RecognizesTheProgramThatAKilledApplicationWasStarting) {
    inPrivateMachine([](uid_t user) {
        // The program is executed before the first check, or after it, as from a slow disk, or even after the second.
        for (const auto delay : {0ms, 50ms, 200ms}) {
            ApplicationWatchRig rig(10ms);
            const ApplicationThatStartsAProgram application(user);
            EXPECT_TRUE(rig.watch.startOf(user));
            application.kill();
            EXPECT_TRUE(rig.gotChange());
            EXPECT_TRUE(rig.watch.startOf(user));
            EXPECT_TRUE(rig.gotNothingFor(delay));
            application.executeProgram();
            EXPECT_TRUE(rig.gotChange());
            EXPECT_FALSE(rig.watch.startOf(user));
        }
    });
}

TEST(ApplicationWatchStartedProgramTest, DoesNotCheckAgainAfterARelease) {
    inPrivateMachine([](uid_t user) {
        ApplicationWatchRig rig;
        const ApplicationThatStartsAProgram application(user);
        EXPECT_TRUE(rig.watch.startOf(user));
        application.kill();
        EXPECT_TRUE(rig.gotChange());
        EXPECT_TRUE(rig.watch.startOf(user));
        rig.watch.release();
        application.executeProgram();
        EXPECT_TRUE(rig.gotNothingFor(300ms));
    });
}

}  // namespace
}  // namespace kovra::helper
