#include "helper/PacedWatch.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "helper/Descriptor.h"
#include "tests/helper/RunUntil.h"

namespace kovra::helper {
namespace {

using namespace std::chrono_literals;
using Times = std::vector<RateLimit::Clock::time_point>;

// A pipe with a PacedWatch on its read end. The watch's work records the time and reads the pipe.
class PacedWatchTest : public testing::Test {
  protected:
    PacedWatchTest() {
        std::array<int, 2> ends{};
        if (::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) throw std::runtime_error("no pipe");
        readEnd = Descriptor(ends[0]);
        writeEnd = Descriptor(ends[1]);
    }
    void watch(RateLimit limit) {
        paced = std::make_unique<PacedWatch>(loop, readEnd.number(), limit, [this] {
            times.push_back(RateLimit::Clock::now());
            read();
        });
    }
    void write(char letter) const { EXPECT_EQ(::write(writeEnd.number(), &letter, 1), 1); }
    void read() {
        std::array<char, 100> buffer{};
        const ssize_t size = ::read(readEnd.number(), buffer.data(), buffer.size());
        if (size > 0) received.append(buffer.data(), static_cast<std::size_t>(size));
    }

    Loop loop;
    Descriptor readEnd;
    Descriptor writeEnd;
    Times times;
    std::string received;
    std::unique_ptr<PacedWatch> paced;
};

TEST_F(PacedWatchTest, RunsTheWorkAtOnceForAFewEventsInARow) {
    watch(RateLimit(5, 1h));
    for (int i = 0; i < 5; ++i) {
        write('a');
        EXPECT_TRUE(runUntil(loop, [&] { return times.size() == static_cast<std::size_t>(i) + 1; }));
    }
}

TEST_F(PacedWatchTest, RunsTheWorkNoMoreOftenThanTheLimitPermits) {
    watch(RateLimit(2, 40ms));
    const auto begin = RateLimit::Clock::now();
    ASSERT_TRUE(runUntil(loop, [&] {
        write('a');
        return times.size() == 6;
    }));
    // The work records its time after the watch has begun the pause. Two successive times may therefore differ by less
    // than the pause, so each time is compared with the beginning.
    for (std::size_t i = 2; i < times.size(); ++i) EXPECT_GE(times[i] - begin, (i - 1) * 40ms) << i;
}

TEST_F(PacedWatchTest, MissesNothingThatComesDuringAPause) {
    watch(RateLimit(1, 40ms));
    const auto begin = RateLimit::Clock::now();
    write('a');
    ASSERT_TRUE(runUntil(loop, [&] { return received == "a"; }));
    write('b');
    write('c');
    EXPECT_TRUE(runUntil(loop, [&] { return received == "abc"; }));
    EXPECT_EQ(times.size(), 2U);
    EXPECT_GE(times[1] - begin, 40ms);
}

TEST_F(PacedWatchTest, MayBeDestroyedByItsWork) {
    paced = std::make_unique<PacedWatch>(loop, readEnd.number(), RateLimit(1, 1ms), [this] {
        paced.reset();
        times.push_back(RateLimit::Clock::now());
    });
    write('a');
    EXPECT_TRUE(runUntil(loop, [&] { return !times.empty(); }));
    runFor(loop, 20ms);
    EXPECT_EQ(times.size(), 1U);
}

}  // namespace
}  // namespace kovra::helper
