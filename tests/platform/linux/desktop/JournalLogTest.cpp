#include "BLE_kovra/platform/linux/desktop/JournalLog.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <iterator>
#include <regex>

#include "tests/platform/linux/desktop/LogSockets.h"
#include "tests/support/Environment.h"

namespace kovra {
namespace {

using Datagrams = std::vector<std::string>;

class JournalLogTest : public testing::Test {
  protected:
    JournalLogTest() { environment_.unset({"JOURNAL_STREAM"}); }

    void log(std::string_view line) { JournalLog(journalPath_, syslogPath_).log(line); }

    // Does what systemd does for a service whose standard error is connected to the journal.
    void connectStandardErrorToJournal() {
        struct stat status{};
        ASSERT_EQ(::fstat(STDERR_FILENO, &status), 0);
        environment_.set("JOURNAL_STREAM", std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino));
    }

    TempFolder folder_;
    const std::string journalPath_ = folder_ / "journal";
    const std::string syslogPath_ = folder_ / "syslog";
    Environment environment_;
    StandardError standardError_{folder_ / "stderr"};
};

TEST_F(JournalLogTest, SendsTheJournalTheFieldsThatItNeeds) {
    LogSocket journal(journalPath_), syslog(syslogPath_);
    log("ble-kovra: не удалось записать флаг (on): 100%");
    const Datagrams entries = journal.datagrams();
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(journalFields(entries.front()),
              (std::map<std::string, std::string>{{"MESSAGE", "ble-kovra: не удалось записать флаг (on): 100%"},
                                                  {"PRIORITY", "4"},
                                                  {"SYSLOG_IDENTIFIER", "ble-kovra"}}));
    EXPECT_EQ(syslog.datagrams(), Datagrams()) << "one line in two logs";
}

TEST_F(JournalLogTest, KeepsLineFeedsInTheJournal) {
    LogSocket journal(journalPath_);
    log("a\nPRIORITY=0\n\nb\n");
    const Datagrams entries = journal.datagrams();
    ASSERT_EQ(entries.size(), 1U);
    auto fields = journalFields(entries.front());
    EXPECT_EQ(fields["MESSAGE"], "a\nPRIORITY=0\n\nb\n");
    EXPECT_EQ(fields["PRIORITY"], "4");
    EXPECT_EQ(standardError_.text(), "a PRIORITY=0  b \n");
}

TEST_F(JournalLogTest, UsesSyslogIfThereIsNoJournal) {
    LogSocket syslog(syslogPath_);
    log("ble-kovra: %s\n100%");
    const Datagrams entries = syslog.datagrams();
    ASSERT_EQ(entries.size(), 1U);
    const std::regex form(
        "<12>(Jan|Feb|Mar|Apr|May|Jun|Jul|Aug|Sep|Oct|Nov|Dec) [ 1-3][0-9] [0-2][0-9]:[0-5][0-9]:"
        "[0-6][0-9] ble-kovra\\[" +
        std::to_string(::getpid()) + "\\]: ble-kovra: %s 100%");
    EXPECT_TRUE(std::regex_match(entries.front(), form)) << entries.front();
}

TEST_F(JournalLogTest, UsesSyslogIfNobodyListensOnTheSocketOfTheJournal) {
    {
        const LogSocket closed(journalPath_);
    }  // the file of the socket remains
    LogSocket syslog(syslogPath_);
    log("line");
    EXPECT_EQ(syslog.datagrams().size(), 1U);
}

TEST_F(JournalLogTest, UsesSyslogIfTheJournalAcceptsNothing) {
    LogSocket journal(journalPath_), syslog(syslogPath_);
    LogSocket::fill(journalPath_);
    log("line");
    EXPECT_EQ(syslog.datagrams().size(), 1U);
    EXPECT_NE(journal.datagrams().back(), "line");
}

TEST_F(JournalLogTest, WritesToStandardErrorToo) {
    LogSocket journal(journalPath_);
    log("a");
    log("b %d");
    EXPECT_EQ(standardError_.text(), "a\nb %d\n");
}

TEST_F(JournalLogTest, WritesNothingToStandardErrorThatIsTheJournal) {
    LogSocket journal(journalPath_);
    connectStandardErrorToJournal();
    log("line");
    EXPECT_EQ(journal.datagrams().size(), 1U);
    EXPECT_EQ(standardError_.text(), "");
}

TEST_F(JournalLogTest, WritesToStandardErrorThatIsTheJournalIfNothingElseAcceptedTheLine) {
    connectStandardErrorToJournal();
    log("line");
    EXPECT_EQ(standardError_.text(), "line\n");
}

TEST_F(JournalLogTest, WritesToStandardErrorThatWasRedirected) {
    LogSocket journal(journalPath_);
    for (const char* stream : {"", "0:0", "1", ":", "a:b", "18446744073709551616:1", "%s"}) {
        environment_.set("JOURNAL_STREAM", stream);
        log("line");
    }
    EXPECT_EQ(standardError_.text(), "line\nline\nline\nline\nline\nline\nline\n");
}

TEST_F(JournalLogTest, SurvivesAStandardErrorWithoutSpace) {
    LogSocket journal(journalPath_);
    const StandardError full(folder_ / "stderr", ::open("/dev/full", O_WRONLY | O_CLOEXEC));
    log("line");
    EXPECT_EQ(journal.datagrams().size(), 1U);
}

TEST_F(JournalLogTest, IsNotBlockedByAStandardErrorThatNobodyReads) {
    LogSocket journal(journalPath_);
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    const int room = ::fcntl(ends[1], F_GETPIPE_SZ);
    const StandardError pipe(folder_ / "stderr", ends[1]);
    log(std::string(static_cast<std::size_t>(room) * 2, 'x'));  // more than the pipe can hold
    log("line");                                                // the pipe is full by now
    EXPECT_EQ(journal.datagrams().size(), 2U);
    ::close(ends[0]);
}

TEST_F(JournalLogTest, SurvivesAPathThatIsTooLongForASocket) {
    LogSocket syslog(syslogPath_);
    JournalLog(folder_ / std::string(200, 'x'), syslogPath_).log("line");
    EXPECT_EQ(syslog.datagrams().size(), 1U);
}

TEST_F(JournalLogTest, HoldsNoDescriptor) {
    namespace fs = std::filesystem;
    LogSocket journal(journalPath_);
    const auto open = [] { return std::distance(fs::directory_iterator("/dev/fd"), fs::directory_iterator()); };
    const auto before = open();
    JournalLog kept(journalPath_, syslogPath_);
    kept.log("line");
    EXPECT_EQ(open(), before);
}

}  // namespace
}  // namespace kovra
