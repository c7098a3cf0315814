#pragma once

#include <string>
#include <string_view>

#include "BLE_kovra/platform/SystemLog.h"

namespace kovra {

// The system's log: the journal where there is one, else syslog. Besides, standard error, unless that is the journal
// itself; so each line is in the log once, and on the terminal of whoever started the program by hand.
//
// A line is one entry. The journal keeps its line feeds; where they would begin a new entry they become blanks. Speaks
// the journal's and syslog's own protocols, a datagram a line, and so holds no descriptor between two lines. A log that
// takes nothing for a tenth of a second is passed over, and so is a standard error: logging must not hold up the main
// job.
class JournalLog : public SystemLog {
  public:
    static constexpr const char* journalSocket = "/run/systemd/journal/socket";
    static constexpr const char* syslogSocket = "/dev/log";

    explicit JournalLog(std::string journal = journalSocket, std::string syslog = syslogSocket);

    void log(std::string_view line) override;

  private:
    std::string journal_;
    std::string syslog_;
};

}  // namespace kovra
