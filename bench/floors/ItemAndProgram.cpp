// The floor of opening the settings window in a separate process: the minimal item, which starts the minimal window.

#include <spawn.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "bench/floors/BareItem.h"

namespace {

using floors::BareItem;

void chosen(BareItem& item, BareItem::Entry entry) {
    if (entry == BareItem::Mute) item.switchMuted();
    if (entry == BareItem::Quit) std::exit(0);
    if (entry != BareItem::Settings) return;
    std::string program = std::filesystem::read_symlink("/proc/self/exe").replace_filename("window");
    char* arguments[] = {program.data(), nullptr};
    if (::posix_spawn(nullptr, program.c_str(), nullptr, nullptr, arguments, environ) != 0) std::exit(1);
}

}  // namespace

int main() {
    std::signal(SIGCHLD, SIG_IGN);
    BareItem item(chosen);
    while (item.answer()) sd_bus_wait(item.bus(), UINT64_MAX);
    return 1;
}
