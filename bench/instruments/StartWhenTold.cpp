// start-when-told COMMAND...: waits for a byte on the standard input, prints the moment and the CPU time that it has
// taken itself, both in nanoseconds, and becomes the command. So a program that watches the process knows it before the
// command starts.

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

#include "bench/instruments/Clocks.h"

int main(int count, char** arguments) {
    char byte = 0;
    if (count < 2 || ::read(STDIN_FILENO, &byte, 1) != 1) return 2;
    // As a desktop starts programs: nothing comes in, and what they say goes to the log.
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
