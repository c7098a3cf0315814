#include "helper/Log.h"

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "helper/Descriptor.h"

namespace kovra::helper {
namespace {

TEST(LogTest, WritesALineWithItsSeverityUnlessItRepeatsThePreviousLine) {
    testing::internal::CaptureStderr();
    log(Severity::warning, "one");
    log(Severity::warning, "one");
    log(Severity::notice, "one");
    logError("two", ENOENT);
    logError("two", ENOENT);
    log(Severity::warning, "one");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "<4>one\n<5>one\n<3>two: No such file or directory\n<4>one\n");
}

// A stream like the one that connects a service to the journal. Nobody reads from it.
class HangingJournal {
  public:
    HangingJournal() : standardError_(::dup(STDERR_FILENO)) {
        int ends[2];
        EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
        journal_ = Descriptor(ends[0]);
        stream_ = Descriptor(ends[1]);
        ::dup2(stream_.number(), STDERR_FILENO);
        const std::string lines(4096, '.');
        while (::send(stream_.number(), lines.data(), lines.size(), MSG_DONTWAIT) > 0) continue;
    }
    ~HangingJournal() { ::dup2(standardError_.number(), STDERR_FILENO); }

    bool has(const std::string& line) const {
        std::string all;
        char part[4096];
        ssize_t size;
        while ((size = ::recv(journal_.number(), part, sizeof part, MSG_DONTWAIT)) > 0) all.append(part, size);
        return all.find(line) != std::string::npos;
    }

  private:
    const Descriptor standardError_;
    Descriptor journal_;
    Descriptor stream_;
};

TEST(LogTest, DoesNotWaitForAJournalThatHangs) {
    const HangingJournal journal;
    ::alarm(20);  // ends the test if the call waits
    log(Severity::warning, "lost");
    ::alarm(0);
    EXPECT_FALSE(journal.has("lost"));
    log(Severity::warning, "read again");
    EXPECT_TRUE(journal.has("read again"));
}

}  // namespace
}  // namespace kovra::helper
