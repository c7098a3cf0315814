#include "BLE_kovra/platform/linux/desktop/XdgWorkspace.h"

#include <unistd.h>

#include "BLE_kovra/platform/linux/desktop/ProgramSearch.h"

namespace kovra {

void XdgWorkspace::open(const std::string& url) {
    const auto program = findProgram("xdg-open");
    if (!program) return;
    Spawn how;
    // Messages of xdg-open, for example about a missing browser, must not reach the program's log.
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) how.giveNothing(stream);
    static_cast<void>(started_.start(how, *program, {url}));
}

}  // namespace kovra
