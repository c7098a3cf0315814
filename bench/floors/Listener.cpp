// The floor of the section plug-to-flag. It writes "on" into the named file when udevd reports a new HID device, and
// "off" when udevd reports a removal. It runs until it is killed.

#include "bench/floors/FlagFile.h"
#include "bench/floors/HIDEvents.h"

int main(int count, char** arguments) {
    if (count != 2) return 2;
    floors::forEachHIDEvent([&](bool came) { floors::writeFlag(arguments[1], came); });
    return 1;
}
