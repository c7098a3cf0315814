#include "BLE_kovra/platform/linux/desktop/XdgWorkspace.h"

#include <unistd.h>

namespace kovra {

void XdgWorkspace::open(const std::string& url) {
    Spawn how;
    // Messages of xdg-open, for example about a missing browser, must not reach the program's log.
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) how.giveNothing(stream);
    // The folders of $PATH may be on a disk that hangs, so another process searches them.
    static_cast<void>(started_.start(how, "/usr/bin/env", {"xdg-open", url}));
}

}  // namespace kovra
