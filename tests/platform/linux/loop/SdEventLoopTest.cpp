#include "BLE_kovra/platform/linux/loop/SdEventLoop.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <ctime>
#include <functional>
#include <string>
#include <system_error>
#include <vector>

#include "tests/support/linux/AfterASleep.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;

struct Pipe {
    Pipe() { EXPECT_EQ(::pipe(ends.data()), 0); }
    ~Pipe() {
        ::close(ends[0]);
        ::close(ends[1]);
    }
    void write(const std::string& text) const {
        EXPECT_EQ(::write(ends[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    char readOne() const {
        char c = 0;
        EXPECT_EQ(::read(ends[0], &c, 1), 1);
        return c;
    }
    std::array<int, 2> ends{};
};

void runFor(SdEventLoop& loop, std::chrono::milliseconds duration) {
    bool done = false;
    loop.asyncAfter(duration, [&] { done = true; });
    loop.runUntil([&] { return done; });
}

TEST(SdEventLoopTest, ReportsAReadableDescriptorOnceUntilItsWatchIsRearmed) {
    SdEventLoop loop;
    const Pipe pipe;
    std::string read;
    const auto watch = loop.watch(pipe.ends[0], [&] { read += pipe.readOne(); });
    pipe.write("ab");
    loop.runUntil([&] { return !read.empty(); });
    runFor(loop, 20ms);
    EXPECT_EQ(read, "a");
    watch->rearm();
    loop.runUntil([&] { return read.size() > 1; });
    EXPECT_EQ(read, "ab");
}

TEST(SdEventLoopTest, ReportsNothingForADestroyedWatch) {
    SdEventLoop loop;
    const Pipe pipe;
    int calls = 0;
    auto watch = loop.watch(pipe.ends[0], [&] { ++calls; });
    pipe.write("a");
    watch.reset();
    runFor(loop, 20ms);
    EXPECT_EQ(calls, 0);
}

TEST(SdEventLoopTest, AllowsABlockToDestroyItsOwnWatch) {
    SdEventLoop loop;
    const Pipe pipe;
    int calls = 0;
    std::unique_ptr<SdEventLoop::Watch> watch;
    watch = loop.watch(pipe.ends[0], [&] {
        watch.reset();
        ++calls;
    });
    pipe.write("a");
    loop.runUntil([&] { return calls > 0; });
    runFor(loop, 20ms);
    EXPECT_EQ(calls, 1);
}

TEST(SdEventLoopTest, CallsWhatFollowsTheEventsInEachTurnBeforeTheQueuedBlocks) {
    SdEventLoop loop;
    std::string order;
    auto token = loop.afterEvents([&] { order += "events "; });
    const auto turn = [&] {
        bool isOver = false;
        loop.async([&] { order += "block "; });
        loop.async([&] { isOver = true; });
        loop.runUntil([&] { return isOver; });
    };
    turn();
    turn();
    token.reset();
    turn();
    EXPECT_EQ(order, "events block events block block ");
}

TEST(SdEventLoopTest, WatchesADescriptorForReadingAndWritingAtTheSameTime) {
    SdEventLoop loop;
    std::array<int, 2> ends{};
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, ends.data()), 0);
    const std::string piece(10'000, 'x');
    while (::write(ends[0], piece.data(), piece.size()) > 0) {
    }
    int readable = 0, writable = 0;
    const auto reading = loop.watch(ends[0], [&] { ++readable; });
    const auto writing = loop.watchWritable(ends[0], [&] { ++writable; });
    runFor(loop, 20ms);
    EXPECT_EQ(writable, 0);
    std::array<char, 10'000> taken{};
    while (::read(ends[1], taken.data(), taken.size()) > 0) {
    }
    loop.runUntil([&] { return writable > 0; });
    runFor(loop, 20ms);
    EXPECT_EQ(writable, 1);
    EXPECT_EQ(readable, 0);
    EXPECT_EQ(::write(ends[1], "a", 1), 1);
    loop.runUntil([&] { return readable > 0; });
    writing->rearm();
    loop.runUntil([&] { return writable > 1; });
    ::close(ends[0]);
    ::close(ends[1]);
}

TEST(SdEventLoopTest, HandlesASignalBeforeQueuedBlocks) {
    SdEventLoop loop;
    std::string order;
    const auto signal = loop.onSignal(SIGUSR1, [&] { order += 's'; });
    ASSERT_NE(signal, nullptr);
    ::raise(SIGUSR1);
    loop.async([&] { order += 'a'; });
    loop.runUntil([&] { return order.size() == 2; });
    EXPECT_EQ(order, "sa");
}

TEST(SdEventLoopTest, HandlesASignalWhileEachBlockAddsAnother) {
    SdEventLoop loop;
    bool isReceived = false;
    const auto signal = loop.onSignal(SIGUSR1, [&] { isReceived = true; });
    constexpr int enough = 100'000;
    int blocks = 0;
    std::function<void()> addAnother = [&] {
        if (++blocks == 1) ::raise(SIGUSR1);
        if (blocks < enough) loop.async(addAnother);
    };
    loop.async(addAnother);
    loop.runUntil([&] { return isReceived || blocks == enough; });
    EXPECT_TRUE(isReceived);
    loop.stop();
}

TEST(SdEventLoopTest, ReceivesASignalThatTheProcessWasStartedToIgnore) {
    std::signal(SIGUSR2, SIG_IGN);
    SdEventLoop loop;
    int received = 0;
    const auto signal = loop.onSignal(SIGUSR2, [&] { ++received; });
    ::raise(SIGUSR2);
    loop.runUntil([&] { return received > 0; });
    EXPECT_EQ(received, 1);
    std::signal(SIGUSR2, SIG_DFL);
}

TEST(SdEventLoopTest, RunsNestedInsideABlockWhileTheQueueContinues) {
    SdEventLoop loop;
    std::string order;
    bool done = false;
    loop.async([&] {
        order += '(';
        loop.async([&] { order += 'b'; });
        loop.asyncAfter(5ms, [&] { done = true; });
        loop.runUntil([&] { return done; });
        order += ')';
        loop.stop();
    });
    loop.async([&] { order += 'a'; });
    loop.run();
    EXPECT_EQ(order, "(ab)");
}

TEST(SdEventLoopTest, ReturnsFromEveryNestedRunWhenItStops) {
    SdEventLoop loop;
    std::string order;
    loop.async([&] {
        loop.runUntil([] { return false; });
        order += 'n';
    });
    loop.asyncAfter(5ms, [&] { loop.stop(); });
    loop.run();
    EXPECT_EQ(order, "n");
}

TEST(SdEventLoopTest, MeasuresADelayFromTheCallHoweverLongTheTurnHasRun) {
    SdEventLoop loop;
    using std::chrono::steady_clock;
    steady_clock::time_point asked, ran;
    loop.async([&] {
        // This turn takes 30 ms before the delay begins.
        const auto busyUntil = steady_clock::now() + 30ms;
        while (steady_clock::now() < busyUntil) {
        }
        asked = steady_clock::now();
        loop.asyncAfter(20ms, [&] {
            ran = steady_clock::now();
            loop.stop();
        });
    });
    loop.run();
    EXPECT_GE(ran - asked, 20ms);
}

TEST(SdEventLoopTest, DoesNotCountTheTimeInWhichTheMachineSleeps) {
    SdEventLoop loop;
    runFor(loop, 1ms);
    EXPECT_EQ(clocksOfTimers(), std::vector{std::to_string(CLOCK_MONOTONIC)});
}

TEST(SdEventLoopTest, MeasuresADelayByTheClockOfItsTimers) {
    EXPECT_EQ(runAfterASleep([] {
                  SdEventLoop loop;
                  runFor(loop, 1ms);
              }),
              0);
}

}  // namespace
}  // namespace kovra
