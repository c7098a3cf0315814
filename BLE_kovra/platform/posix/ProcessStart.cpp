#include "BLE_kovra/platform/posix/ProcessStart.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <initializer_list>

namespace kovra {

namespace {

// Ignores the signals for a closed pipe, a file size limit and terminal output of a background job. The system calls
// then report errors instead, and background jobs can write to the terminal.
void ignoreFatalSignals() {
    for (const int number : {SIGPIPE, SIGXFSZ, SIGTTOU}) std::signal(number, SIG_IGN);
}

// Resets SIGCHLD. An inherited SIG_IGN would discard the exit status of child processes.
void restoreChildSignal() { std::signal(SIGCHLD, SIG_DFL); }

// Opens /dev/null as each closed standard descriptor. Otherwise the next file to be opened would get the number of
// standard error and receive the log lines.
void openStandardDescriptors() {
    int number;
    do {
        number = ::open("/dev/null", O_RDWR);
    } while (number >= 0 && number <= STDERR_FILENO);
    ::close(number);
}

}  // namespace

void prepareProcess() {
    openStandardDescriptors();
    ignoreFatalSignals();
    restoreChildSignal();
}

bool startedIgnoringHangUp() {
    struct sigaction action{};
    return ::sigaction(SIGHUP, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

}  // namespace kovra
