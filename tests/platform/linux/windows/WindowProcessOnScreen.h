#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>

#include <chrono>
#include <fstream>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "BLE_kovra/platform/linux/loop/SdEventLoop.h"
#include "BLE_kovra/platform/linux/windows/WindowProcess.h"
#include "tests/support/Environment.h"
#include "tests/support/linux/Onlooker.h"
#include "tests/support/linux/VirtualScreen.h"

namespace kovra {

// The real window process on an X server (Xvfb), with a client that watches and clicks. A process that shows nothing
// ends after `linger`.
class WindowProcessOnScreen : public testing::Test {
  protected:
    static constexpr std::chrono::seconds limit{30};
    static constexpr std::chrono::milliseconds linger{300};

    WindowProcessOnScreen() {
        environment.set("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
        environment.unset({"WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "QT_SCALE_FACTOR"});
    }
    ~WindowProcessOnScreen() override {
        window.hideTray();
        waitUntil([] { return windowProcesses().empty(); });
    }

    template <typename T>
    T waitFor(const std::function<std::optional<T>()>& look) {
        const auto end = std::chrono::steady_clock::now() + limit;
        for (;;) {
            if (const std::optional<T> seen = look()) return *seen;
            if (std::chrono::steady_clock::now() > end) break;
            let(std::chrono::milliseconds(10));
        }
        ADD_FAILURE() << "timed out";
        return T();
    }
    void waitUntil(const std::function<bool()>& condition) {
        waitFor<bool>([&] { return condition() ? std::optional(true) : std::nullopt; });
    }
    void let(std::chrono::milliseconds duration) {
        bool isOver = false;
        loop.asyncAfter(duration, [&] { isOver = true; });
        loop.runUntil([&] { return isOver; });
    }

    static std::vector<pid_t> windowProcesses() {
        std::vector<pid_t> found;
        std::ifstream children("/proc/thread-self/children");
        for (pid_t child = 0; children >> child;) {
            std::string name;
            std::ifstream("/proc/" + std::to_string(child) + "/comm") >> name;
            if (name == "ble-kovra-ui") found.push_back(child);
        }
        return found;
    }

    Environment environment;
    VirtualScreen screen{"640x480x24"};
    SdEventLoop loop;
    WindowProcess window{
        loop, windowProgram,
        WindowProcess::Timing{{std::chrono::milliseconds(10), std::chrono::milliseconds(100), std::chrono::seconds(1)},
                              std::chrono::minutes(1),
                              linger,
                              std::chrono::hours(1),
                              std::chrono::hours(1)}};
    Onlooker onlooker;
};

}  // namespace kovra
