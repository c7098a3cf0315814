#pragma once

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "BLE_kovra/platform/linux/bus/SystemBus.h"
#include "BLE_kovra/platform/linux/hid/UdevHIDService.h"
#include "BLE_kovra/platform/linux/loop/SdEventLoop.h"
#include "tests/fakes/FakeLog.h"
#include "tests/platform/linux/hid/MockHIDBus.h"
#include "tests/support/Environment.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra {

// Lets the next reception of an event fail as after an overflow of the socket. See UdevHIDManagerRecoveryTest.cpp.
extern bool nextReceptionOverflows;

// A machine with a HID bus of its own, the real adapter on it, and a record of the reports. "+7 apple" means the
// attachment of interface 7, and "-7 apple" its removal.
class UdevHIDRig {
  public:
    UdevHIDRig() { startUdevd(); }
    // Adds a node like those in /dev/input, which the kernel adds and removes without udevd.
    void addInputNode(const std::string& name) { writeFile(folder_ / ("input/" + name), ""); }
    void removeInputNode(const std::string& name) { std::filesystem::remove(folder_ / ("input/" + name)); }

    void startUdevd() { writeFile(folder_ / "control", ""); }
    void stopUdevd() { std::filesystem::remove(folder_ / "control"); }
    void enterSandbox() { writeFile(folder_ / "sandbox", ""); }
    void reachKernel() { kernelIsReachable_ = true; }

    void open() {
        manager = service.createManager();
        manager->registerMatchingCallback([this](const HIDDevice& device) { record('+', device); });
        manager->registerRemovalCallback([this](const HIDDevice& device) { record('-', device); });
        manager->open();
    }

    // Runs the loop until no report has arrived for a hundred turns in a row.
    void settle() {
        for (int quietTurns = 0; quietTurns < 100;) {
            const std::size_t before = reports.size();
            bool turned = false;
            loop.async([&] { turned = true; });
            loop.runUntil([&] { return turned; });
            quietTurns = reports.size() == before ? quietTurns + 1 : 0;
        }
    }
    void runFor(std::chrono::nanoseconds duration) {
        bool isOver = false;
        const auto task = loop.asyncAfter(duration, [&] { isOver = true; });
        loop.runUntil([&] { return isOver; });
    }
    // Runs the loop until the condition holds, but no longer than `atMost`. Returns whether the condition holds.
    bool waitUntil(const std::function<bool()>& condition, std::chrono::nanoseconds atMost = std::chrono::seconds(20)) {
        bool isOver = false;
        const auto task = loop.asyncAfter(atMost, [&] { isOver = true; });
        loop.runUntil([&] { return isOver || condition(); });
        task->cancel();
        return condition();
    }
    std::vector<std::string> newReports() {
        settle();
        return std::exchange(reports, {});
    }

    MockHIDBus bus;
    SdEventLoop loop;
    FakeLog log;
    std::vector<std::string> reports;
    std::function<void()> onReport;

  private:
    void record(char sign, const HIDDevice& device) {
        reports.push_back(sign + std::to_string(device.registryEntryID().value_or(0)) + " " +
                          device.stringProperty("Product").value_or("(nameless)"));
        if (onReport) onReport();
    }

    std::string inputNodes() const {
        std::filesystem::create_directory(folder_ / "input");
        return folder_ / "input";
    }

    const TempFolder folder_;
    bool kernelIsReachable_ = false;
    // Sets the address of the system bus to a path that does not exist, unless the test has set an address. The tests
    // must not use the machine's bus.
    struct NoRealBus {
        NoRealBus() {
            constexpr const char* variable = "DBUS_SYSTEM_BUS_ADDRESS";
            if (std::getenv(variable) == nullptr) environment.set(variable, "unix:path=/nonexistent/bus");
        }
        Environment environment;
    };
    const NoRealBus noRealBus_;

  public:
    SystemBus machine{loop};
    UdevHIDService service{machine, log, {folder_ / "control", {folder_ / "sandbox"}, inputNodes(), [this] {
                                              return kernelIsReachable_;
                                          }}};
    std::unique_ptr<HIDManager> manager;
};

}  // namespace kovra
