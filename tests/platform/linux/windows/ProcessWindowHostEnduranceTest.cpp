#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "BLE_kovra/platform/linux/session/ActivationToken.h"
#include "BLE_kovra/platform/linux/windows/ProcessWindowHost.h"
#include "BLE_kovra/platform/linux/windows/WindowProcess.h"
#include "tests/fakes/FakeDesktop.h"
#include "tests/platform/linux/loop/Turns.h"
#include "tests/support/linux/OwnResources.h"
#include "tests/support/posix/OwnProcess.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;

View listOf(const std::vector<std::string>& devices, int change) {
    View list{Stack{}, {}, {}, {}};
    for (const std::string& device : devices) {
        const bool isOn = (change + static_cast<int>(device.size())) % 3 == 0;
        View label{Text{device + (isOn ? "" : " (disconnected)")}, {}, {}, {}};
        list.children.push_back(View{Toggle{isOn, [](bool) {}}, {std::move(label)}, {}, {}}.identified(device));
    }
    return list;
}

// A window stays open while its list of mice changes many times. The memory use must not grow meanwhile, and the memory
// must be freed at the end.
TEST(ProcessWindowHostEnduranceTest, LeaksNothingInThousandsOfChangesOfTheList) {
    constexpr int changes = 6'000;
    const TempFolder folder;
    const std::string program = folder / "program";
    writeFile(program, "#!/bin/sh\nexec cat <&3 >/dev/null\n");
    ::chmod(program.c_str(), 0755);

    SdEventLoop loop;
    // The program gives no sign of life, so the timeouts are long.
    WindowProcess process(loop, [&] { return program; },
                          {.delays = {1h}, .settled = 1h, .linger = 50ms, .firstSign = 1h, .sign = 1h});
    ActivationToken token;
    FakeWorkspace workspace;
    ProcessWindowHost host(loop, process, token, workspace);
    std::vector<std::string> devices;
    for (int device = 0; device < 8; ++device) devices.push_back("Mouse " + std::string(device + 1U, 'x'));
    auto window = host.makeWindow(listOf(devices, 0));
    const std::size_t descriptors = openDescriptors();
    const std::size_t before = bytesInUse();

    window->makeKeyAndOrderFront();
    std::size_t peakAtFirst = 0, peak = 0;  // the highest memory use in the first tenth of the changes, and after it
    for (int change = 0; change < changes; ++change) {
        std::rotate(devices.begin(), devices.begin() + change % 7, devices.end());
        window->setContent(listOf(devices, change));
        bool isSent = false;
        loop.async([&] { isSent = true; });
        loop.runUntil([&] { return isSent; });
        std::size_t& highest = change < changes / 10 ? peakAtFirst : peak;
        highest = std::max(highest, bytesInUse());
    }
    EXPECT_TRUE(process.isRunning());
    // The limit is less than one byte per change. A process that reads slowly may leave one more line in the outbox.
    EXPECT_LE(peak, peakAtFirst + changes * 9 / 10);

    window.reset();
    ASSERT_TRUE(turnUntil(loop, [] { return !hasChildren(); }));
    turnUntil(loop, [&] { return openDescriptors() == descriptors; });
    EXPECT_EQ(openDescriptors(), descriptors);
    EXPECT_LT(bytesInUse(), before + changes * 9 / 10);
    EXPECT_LE(turnsWithin(loop, 200ms), 2) << "something still wakes the loop";
}

}  // namespace
}  // namespace kovra
