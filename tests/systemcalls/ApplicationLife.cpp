#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/helper/WaitUntil.h"
#include "tests/support/posix/TempFolder.h"
#include "tests/systemcalls/Traced.h"

namespace kovra::systemcalls {

namespace {

using namespace std::chrono_literals;
using helper::Machine;
using helper::waitUntil;

constexpr auto patience = 6s;
constexpr auto usual = 1500ms;
constexpr auto atTheEnd = 20s;

const std::string flag = Machine::flagFolder + "/state";
const std::string home = "/run/home";

// The chosen mouse is connected.
void prepare() {
    const std::filesystem::path sys = std::filesystem::path(std::getenv("UMOCKDEV_DIR")) / "sys";
    const std::string node = "0003:046D:C077.0001";
    const auto folder = sys / "devices/virtual/misc/uhid" / node;
    if (!std::filesystem::exists(folder)) {
        std::filesystem::create_directories(folder);
        std::filesystem::create_directories(sys / "bus/hid/drivers/hid-generic");
        std::filesystem::create_directory_symlink("../../../../../bus/hid", folder / "subsystem");
        std::filesystem::create_directory_symlink("../../../devices/virtual/misc/uhid/" + node,
                                                  sys / "bus/hid/devices" / node);
        writeFile(folder / "uevent", "DRIVER=hid-generic\nHID_ID=0003:0000046D:0000C077\nHID_NAME=A Mouse\n");
    }
    const std::string config = Machine::root + home + "/config/ble-kovra";
    std::filesystem::create_directories(config);
    writeFile(config + "/preferences.json",
              R"({"isEnabled":true,"mode":"onDevice","selectedDeviceIDs":["A Mouse#1133:49271"]})");
    for (const auto& entry : std::filesystem::directory_iterator(Machine::flagFolder)) std::filesystem::remove(entry);
    writeFile(flag, "off");
}

// No display and no bus.
std::vector<std::string> environment() {
    std::vector<std::string> entries{"DBUS_SYSTEM_BUS_ADDRESS=unix:path=/nonexistent/bus", "HOME=" + home,
                                     "XDG_CONFIG_HOME=" + home + "/config"};
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "XDG_SESSION_TYPE", "XDG_RUNTIME_DIR",
                             "DBUS_SESSION_BUS_ADDRESS", "XDG_CONFIG_DIRS", "XDG_DATA_DIRS"})
        entries.emplace_back(name);  // without a value, strace removes the variable
    return entries;
}

}  // namespace

Outcome applicationLife(Machine&, const std::string& program, const Failure& failure, const std::string& trace) {
    prepare();
    Traced traced(program, environment(), failure, trace);
    helper::ChildProgram& process = traced.process();
    const auto before = std::chrono::steady_clock::now();
    const auto reads = [](const char* word) { return readFile(flag) == word; };
    const bool isOn = waitUntil([&] { return reads("on") || !process.isRunning(); }, patience) && reads("on");
    const bool isLate = std::chrono::steady_clock::now() - before > usual;
    const bool wasRunning = process.isRunning();
    process.signal(SIGTERM);
    const bool hasEnded = waitUntil([&] { return !process.isRunning(); }, atTheEnd);
    Outcome outcome{"as usual", false, traced.log()};
    if (!hasEnded) {
        process.end(SIGKILL);
        return {"hangs at its end", true, outcome.log};
    }
    const int code = process.result();
    if (const std::string breakage = traced.breakage(); !breakage.empty()) return {breakage, true, outcome.log};
    if (code != 0 && code != 1) return {"ends with " + std::to_string(code), true, outcome.log};
    if (!wasRunning)
        outcome.result = isOn ? "ended" : "did not start";
    else if (!isOn)
        outcome.result = "muted nothing";
    else if (isLate)
        outcome.result = "late";
    // An empty flag does not mute either.
    if (reads("on")) outcome.result = "left its word";
    return outcome;
}

}  // namespace kovra::systemcalls
