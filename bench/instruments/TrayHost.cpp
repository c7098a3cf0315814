// A panel of the private session in which programs are measured. Takes one command a line:
//
//     subject PID WORD   the program that is measured from now on (see Subject.h)
//     choose TITLE       chooses this entry of its menu
//     close              closes its newest window
//
// and tells one event a line (see Tell.h): "subject" when it knows it, "registered CPU" when its icon asks for a place,
// "chosen" or "no-entry", "mapped", "painted", "gone". It ends with its standard input.

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
        // The next line is asked for only when this one has been dealt with, so none waits in a buffer.
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
