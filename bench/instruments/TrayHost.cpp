// The panel of the private session in which programs are measured. It reads one command per line:
//
//     subject PID WORD   sets the measured program (see Subject.h)
//     choose TITLE       chooses this entry in the menu of the newest item
//     close              closes the newest window
//
// It prints one event per line (see Tell.h). The first one is "ready". "subject" answers the command of that name;
// "chosen" or "no-entry" answers `choose`. "registered CPU" reports an icon with the CPU time of its program in
// nanoseconds. "mapped", "painted" and "gone" report a window. The panel exits at the end of its standard input.

#include <poll.h>
#include <unistd.h>

#include <iostream>
#include <sstream>
#include <string>

#include "bench/instruments/BusPanel.h"
#include "bench/instruments/Clocks.h"
#include "bench/instruments/Subject.h"
#include "bench/instruments/Tell.h"
#include "bench/instruments/XScreen.h"

int main() {
    bench::Subject subject;
    bench::XScreen screen(subject);
    bench::BusPanel panel(subject);
    bench::tell(bench::now(), "ready");
    while (panel.answer() && screen.answer()) {
        pollfd sources[] = {{STDIN_FILENO, POLLIN, 0},
                            {sd_bus_get_fd(panel.bus()), static_cast<short>(sd_bus_get_events(panel.bus())), 0},
                            {screen.descriptor(), POLLIN, 0}};
        ::poll(sources, std::size(sources), -1);
        if (sources[0].revents == 0) continue;
        // The scripts send a command only after this program has reported an event for the previous one, so std::cin
        // never buffers a second line.
        std::string line, command, rest;
        if (!std::getline(std::cin, line)) return 0;
        std::istringstream words(line);
        words >> command;
        if (command == "subject") {
            pid_t process = 0;
            words >> process >> rest;
            subject.set(process, rest);
            bench::tell(bench::now(), "subject");
        } else if (command == "choose") {
            screen.watchForWindow();
            panel.choose(line.substr(line.find(' ') + 1));
        } else if (command == "close") {
            screen.closeWindow();
        }
    }
    return 1;
}
