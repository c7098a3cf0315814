// The floor of the section plug-to-pad. It writes "1" into the named `inhibited` attribute of a touchpad when udevd
// reports a new HID device, and "0" when udevd reports a removal. It runs until it is killed.

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

#include "bench/floors/HIDEvents.h"

int main(int count, char** arguments) {
    if (count != 2) return 2;
    floors::forEachHIDEvent([&](bool came) {
        const int attribute = ::open(arguments[1], O_WRONLY | O_CLOEXEC);
        const bool written = attribute >= 0 && ::write(attribute, came ? "1" : "0", 1) == 1;
        if (!written || ::close(attribute) != 0) std::perror(arguments[1]);
    });
    return 1;
}
