#include "BLE_kovra/platform/linux/wire/LineSocket.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string>
#include <vector>

namespace kovra {
namespace {

using Lines = std::vector<std::string>;

struct Pair {
    Pair() { EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0); }
    ~Pair() {
        closeOther();
        ::close(ends[0]);
    }
    void closeOther() {
        if (ends[1] >= 0) ::close(ends[1]);
        ends[1] = -1;
    }
    int ours() const { return ends[0]; }
    int other() const { return ends[1]; }
    std::array<int, 2> ends{};
};

TEST(LineReaderTest, ReturnsEachLineWhenItIsComplete) {
    LineReader reader(longestToResident);
    EXPECT_EQ(reader.feed("on"), Lines());
    EXPECT_EQ(reader.feed("e\ntwo\n\nth"), (Lines{"one", "two", ""}));
    EXPECT_EQ(reader.feed("ree\n"), Lines{"three"});
}

TEST(LineReaderTest, DropsALineThatIsTooLongAndReadsTheNext) {
    LineReader reader(1'000);
    const std::string longest(1'000, 'x');
    EXPECT_EQ(reader.feed(longest + "\n"), Lines{longest});
    EXPECT_EQ(reader.feed(longest + "y\nnext\n"), Lines{"next"});
    EXPECT_EQ(reader.feed(longest), Lines());
    for (int i = 0; i < 20; ++i) EXPECT_EQ(reader.feed(longest), Lines());
    EXPECT_EQ(reader.feed("\nnext\n"), Lines{"next"});
}

TEST(LineSocketTest, ReceivesLinesAndTheEndOfTheStream) {
    Pair pair;
    LineReader reader(longestToResident);
    EXPECT_EQ(receiveLines(pair.ours(), reader), Lines());
    EXPECT_TRUE(sendLine(pair.other(), "one\n"));
    EXPECT_TRUE(sendLine(pair.other(), "two\n"));
    EXPECT_EQ(receiveLines(pair.ours(), reader), (Lines{"one", "two"}));
    EXPECT_TRUE(sendLine(pair.other(), "three\n"));
    pair.closeOther();
    EXPECT_EQ(receiveLines(pair.ours(), reader), Lines{"three"});
    errno = EAGAIN;  // from an earlier call
    EXPECT_EQ(receiveLines(pair.ours(), reader), std::nullopt);
}

TEST(LineSocketTest, DropsWholeLinesThatNobodyReads) {
    const Pair pair;
    const std::string line = "a line of some length, as long as most\n";
    int taken = 0;
    while (sendLine(pair.other(), line)) ++taken;
    LineReader reader(longestToResident);
    int received = 0;
    for (Lines lines; !(lines = receiveLines(pair.ours(), reader).value_or(Lines())).empty();) {
        for (const std::string& each : lines) EXPECT_EQ(each + "\n", line);
        received += static_cast<int>(lines.size());
    }
    EXPECT_EQ(received, taken);
}

TEST(LineSocketTest, ReportsThatThePeerHasClosed) {
    Pair pair;
    pair.closeOther();
    EXPECT_FALSE(sendLine(pair.ours(), "one\n"));
}

TEST(LineSocketOutboxTest, SendsAtOnceWhatTheSocketAccepts) {
    const Pair pair;
    Outbox outbox;
    outbox.put(0, "one\n");
    outbox.put(1, "two\n");
    EXPECT_EQ(outbox.flush(pair.ours()), Outbox::State::empty);
    LineReader reader(longestToResident);
    EXPECT_EQ(receiveLines(pair.other(), reader), (Lines{"one", "two"}));
}

TEST(LineSocketOutboxTest, KeepsTheNewestOfEachKindWhileNobodyReads) {
    const Pair pair;
    Outbox outbox;
    const std::string filling(2'000'000, 'x');
    outbox.put(0, filling + "\n");
    EXPECT_EQ(outbox.flush(pair.ours()), Outbox::State::waiting);
    for (int i = 0; i < 1'000; ++i) {
        outbox.put(0, "zero " + std::to_string(i) + "\n");
        outbox.put(1, "one " + std::to_string(i) + "\n");
        EXPECT_EQ(outbox.flush(pair.ours()), Outbox::State::waiting);
    }
    LineReader reader(longestToResident);
    Lines received;
    for (auto state = Outbox::State::waiting; state == Outbox::State::waiting || received.size() < 2;) {
        const auto lines = receiveLines(pair.other(), reader);
        ASSERT_TRUE(lines);
        received.insert(received.end(), lines->begin(), lines->end());
        state = outbox.flush(pair.ours());
        ASSERT_NE(state, Outbox::State::broken);
    }
    // The reader drops the long line, but the next lines arrive.
    EXPECT_EQ(received, (Lines{"zero 999", "one 999"}));
}

TEST(LineSocketOutboxTest, ReportsThatThePeerHasClosed) {
    Pair pair;
    pair.closeOther();
    Outbox outbox;
    outbox.put(0, "one\n");
    EXPECT_EQ(outbox.flush(pair.ours()), Outbox::State::broken);
}

}  // namespace
}  // namespace kovra
