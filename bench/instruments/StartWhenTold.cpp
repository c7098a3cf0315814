// start-when-told COMMAND...: waits for a byte on standard input, prints the time and its own CPU time, both in
// nanoseconds, and executes the command. An observer thus knows the process ID before the command starts.

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

#include "bench/instruments/Clocks.h"

int main(int count, char** arguments) {
    char byte = 0;
    if (count < 2 || ::read(STDIN_FILENO, &byte, 1) != 1) return 2;
    // Like a desktop, give the program empty input, and one log for both of its outputs.
    const int nothing = ::open("/dev/null", O_RDONLY);
    ::dup2(nothing, STDIN_FILENO);
    ::close(nothing);
    std::printf("%lld %lld\n", bench::now(), bench::nanoseconds(CLOCK_PROCESS_CPUTIME_ID));
    std::fflush(stdout);
    ::dup2(STDERR_FILENO, STDOUT_FILENO);
    ::execvp(arguments[1], arguments + 1);
    std::perror(arguments[1]);
    return 127;
}
