#include "helper/Loop.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <ctime>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "helper/Descriptor.h"
#include "tests/support/linux/AfterASleep.h"

namespace kovra::helper {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

struct Pipe {
    Pipe() {
        std::array<int, 2> ends{};
        EXPECT_EQ(::pipe(ends.data()), 0);
        out = Descriptor(ends[0]);
        in = Descriptor(ends[1]);
    }
    void write(const std::string& text) const {
        EXPECT_EQ(::write(in.number(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    char readOne() const {
        char c = 0;
        EXPECT_EQ(::read(out.number(), &c, 1), 1);
        return c;
    }
    Descriptor out;
    Descriptor in;
};

TEST(LoopTest, RunsTheWorkWhileTheDescriptorIsReadable) {
    Loop loop;
    const Pipe pipe;
    std::string read;
    const auto watch = loop.onReadable(pipe.out.number(), [&] {
        read += pipe.readOne();
        if (read.size() == 3) loop.stop();
    });
    pipe.write("abc");
    loop.run();
    EXPECT_EQ(read, "abc");
}

TEST(LoopTest, RunsTheWorkWhenTheOtherEndIsClosed) {
    Loop loop;
    Pipe pipe;
    const auto watch = loop.onReadable(pipe.out.number(), [&] { loop.stop(); });
    pipe.in = Descriptor();
    loop.run();
}

TEST(LoopTest, RunsEachTimerOnceAndNeverEarly) {
    Loop loop;
    int runs = 0;
    std::unique_ptr<Loop::Watch> end;
    const auto start = Clock::now();
    const auto timer = [&](std::chrono::milliseconds delay) {
        return loop.after(delay, [&, delay] {
            EXPECT_GE(Clock::now() - start, delay);
            if (++runs == 2) end = loop.after(20ms, [&] { loop.stop(); });
        });
    };
    const auto later = timer(40ms);
    const auto earlier = timer(20ms);
    loop.run();
    EXPECT_EQ(runs, 2);
}

// By default sd-event may delay a timer by up to 250 ms. The median is robust against delays of a busy machine.
TEST(LoopTest, DoesNotCoalesceTimers) {
    constexpr std::size_t count = 9;
    Loop loop;
    std::vector<Clock::duration> late;
    std::unique_ptr<Loop::Watch> timer;
    const std::function<void()> start = [&] {
        timer = loop.after(5ms, [&, due = Clock::now() + 5ms] {
            late.push_back(Clock::now() - due);
            late.size() < count ? start() : loop.stop();
        });
    };
    start();
    loop.run();
    std::sort(late.begin(), late.end());
    EXPECT_LT(late[count / 2], 100ms);
}

TEST(LoopTest, DoesNotRunWorkWhoseWatchWasDestroyed) {
    Loop loop;
    const Pipe pipe;
    int runs = 0;
    std::unique_ptr<Loop::Watch> own;
    own = loop.onReadable(pipe.out.number(), [&] {
        ++runs;
        own.reset();
    });
    auto other = loop.after(1ms, [&] { runs += 100; });
    other.reset();
    pipe.write("ab");
    const auto end = loop.after(20ms, [&] { loop.stop(); });
    loop.run();
    EXPECT_EQ(runs, 1);
}

TEST(LoopTest, RunsOneOfTwoPiecesOfWorkThatDestroyEachOther) {
    Loop loop;
    const Pipe one;
    const Pipe two;
    int runs = 0;
    std::unique_ptr<Loop::Watch> first;
    std::unique_ptr<Loop::Watch> second;
    const auto work = [&] {
        ++runs;
        first.reset();
        second.reset();
    };
    first = loop.onReadable(one.out.number(), work);
    second = loop.onReadable(two.out.number(), work);
    one.write("a");
    two.write("a");
    const auto end = loop.after(20ms, [&] { loop.stop(); });
    loop.run();
    EXPECT_EQ(runs, 1);
}

TEST(LoopTest, RunsTheWorkInsteadOfASignalsDefaultAction) {
    Loop loop;
    int signals = 0;
    const auto watch = loop.onSignal(SIGUSR1, [&] {
        ++signals;
        loop.stop();
    });
    ::kill(::getpid(), SIGUSR1);
    loop.run();
    EXPECT_EQ(signals, 1);
}

TEST(LoopTest, PropagatesAnExceptionOfTheWork) {
    Loop loop;
    const auto watch = loop.after(0ms, [] { throw std::runtime_error("no memory"); });
    EXPECT_THROW(loop.run(), std::runtime_error);
}

TEST(LoopTest, MeasuresADelayByAClockThatStopsWhileTheMachineSleeps) {
    EXPECT_EQ(runAfterASleep([] {
                  Loop loop;
                  const auto over = loop.after(1ms, [&] { loop.stop(); });
                  loop.run();
                  if (clocksOfTimers() != std::vector{std::to_string(CLOCK_MONOTONIC)}) ::_exit(102);
              }),
              0);
}

}  // namespace
}  // namespace kovra::helper
