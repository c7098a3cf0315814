#include <algorithm>

#include "BLE_kovra/platform/linux/desktop/JournalLog.h"
#include "tests/contracts/SystemLogContract.h"
#include "tests/platform/linux/desktop/LogSockets.h"

namespace kovra {
namespace {

// A system with a journal.
class JournalDriver {
  public:
    SystemLog& log() { return log_; }
    std::vector<std::string> entries() {
        std::vector<std::string> messages;
        for (const std::string& datagram : journal_.datagrams()) messages.push_back(journalFields(datagram)["MESSAGE"]);
        return messages;
    }

  private:
    TempFolder folder_;
    LogSocket journal_{folder_ / "journal"};
    StandardError standardError_{folder_ / "stderr"};
    JournalLog log_{folder_ / "journal", folder_ / "syslog"};
};

// A system with syslog and no journal.
class SyslogDriver {
  public:
    SystemLog& log() { return log_; }
    std::vector<std::string> entries() {
        std::vector<std::string> messages;
        for (const std::string& datagram : syslog_.datagrams()) {
            messages.push_back(datagram.substr(std::min(datagram.find("]: ") + 3, datagram.size())));
        }
        return messages;
    }

  private:
    TempFolder folder_;
    LogSocket syslog_{folder_ / "syslog"};
    StandardError standardError_{folder_ / "stderr"};
    JournalLog log_{folder_ / "journal", folder_ / "syslog"};
};

// A system with neither a journal nor syslog. The user who started the program sees the lines on standard error.
class StandardErrorDriver {
  public:
    SystemLog& log() { return log_; }
    std::vector<std::string> entries() {
        std::vector<std::string> lines;
        std::string text = standardError_.text();
        for (std::size_t end; (end = text.find('\n')) != std::string::npos; text.erase(0, end + 1)) {
            lines.push_back(text.substr(0, end));
        }
        if (!text.empty()) lines.push_back("torn: " + text);
        return lines;
    }

  private:
    TempFolder folder_;
    StandardError standardError_{folder_ / "stderr"};
    JournalLog log_{folder_ / "journal", folder_ / "syslog"};
};

INSTANTIATE_TYPED_TEST_SUITE_P(JournalLog, SystemLogContract, JournalDriver);
INSTANTIATE_TYPED_TEST_SUITE_P(JournalLogToSyslog, SystemLogContract, SyslogDriver);
INSTANTIATE_TYPED_TEST_SUITE_P(JournalLogToStandardError, SystemLogContract, StandardErrorDriver);

}  // namespace
}  // namespace kovra
