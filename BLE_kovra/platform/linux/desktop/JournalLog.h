#pragma once

#include <string>
#include <string_view>

#include "BLE_kovra/platform/SystemLog.h"

namespace kovra {

// A log that writes to the journal, or to syslog if there is no journal. Each line is also written to standard error,
// unless it was logged and standard error is connected to the journal. So the journal holds each line once, and a user
// who starts the program in a terminal sees the lines there.
//
// Each call of log() creates one entry. In the journal, an entry may contain line feeds. For syslog and standard
// error, a blank replaces each line feed. The class implements the native protocols of the journal and of syslog. It
// sends each entry as one datagram, and keeps no descriptor open between entries. A destination that
// accepts nothing for a tenth of a second is skipped, including standard error, because logging must not delay muting.
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
