#include "BLE_kovra/platform/posix/ProcessStart.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>

namespace kovra {

namespace {

// What would otherwise end the process without a word, or stop it: a closed pipe, a limit on file sizes, a line for the
// terminal from a job in the background. The calls report the first two and do the third.
void ignoreFatalConditions() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGTTOU, SIG_IGN);
}

// Whoever started us may ignore the end of its children; of ours nobody could tell then how they ended.
void hearOfChildren() { std::signal(SIGCHLD, SIG_DFL); }

// If we were started with a standard descriptor closed, the next file opened would take its number, and our log lines.
void openStandardDescriptors() {
    int number;
    do {
        number = ::open("/dev/null", O_RDWR);
    } while (number >= 0 && number <= STDERR_FILENO);
    if (number >= 0) ::close(number);
}

}  // namespace

void prepareProcess() {
    openStandardDescriptors();
    ignoreFatalConditions();
    hearOfChildren();
}

bool startedIgnoringHangUp() {
    struct sigaction action {};
    return ::sigaction(SIGHUP, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

}  // namespace kovra
