#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "BLE_kovra/platform/linux/windows/WindowProcess.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra {

using namespace std::chrono_literals;

// A rig that runs shell scripts as the window process. The scripts write their results to files in the folder `$here`.
class WindowProcessRig : public testing::Test {
  protected:
    static constexpr auto limit = 20s;
    static constexpr auto linger = 200ms;

    void TearDown() override {
        window.reset();
        while (::waitpid(-1, nullptr, 0) > 0) {
        }
    }

    std::string script(const std::string& text) const {
        const std::string path = folder / "program";
        writeFile(path, "#!/bin/sh\nhere='" + folder.path().string() + "'\n" + text + "\n");
        ::chmod(path.c_str(), 0755);
        return path;
    }
    // Runs `text` as the window process, with short delays.
    void use(const std::string& text) {
        const std::string path = script(text);
        window = std::make_unique<WindowProcess>(loop, [path] { return path; }, times, [this] { return isReplaced; });
        endListener = window->listenForEnd([this] { ++ends; });
        listening = window->listen(
            [this](const ToResident& message) { chosen.push_back(std::get<ItemChosen>(message).position); });
    }
    std::string read(const std::string& name) const {
        const auto names = folder.names();
        return names.contains(name) ? readFile(folder / name) : "";
    }
    void show(const std::string& toolTip) { window->show(ShowTray{{}, false, toolTip, {}}); }

    void showWindow() { window->show(ShowWindow()); }
    void showAlert() { window->show(ShowAlerts{{{7, "", {}}}}); }
    void popUp(int x) { window->send(PopUpMenu{.x = x, .y = 0, .asked = {}, .menu = {}}); }

    // Checks the condition every few milliseconds, because no descriptor reports what a script writes to its files.
    void waitFor(const std::function<bool()>& condition) {
        const auto end = std::chrono::steady_clock::now() + limit;
        while (!condition() && std::chrono::steady_clock::now() < end) let(5ms);
        EXPECT_TRUE(condition());
    }
    void let(std::chrono::milliseconds duration) {
        bool done = false;
        loop.asyncAfter(duration, [&] { done = true; });
        loop.runUntil([&] { return done; });
    }
    pid_t pid() const { return std::stoi("0" + read("pid")); }
    std::size_t starts() const {
        const std::string text = read("starts");
        return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
    }

    const TempFolder folder;
    SdEventLoop loop;
    // Most scripts give no sign of life, so the two timeouts for these signs are an hour.
    WindowProcess::Timing times{{10ms, 20ms, 30ms}, 1h, linger, 1h, 1h};
    bool isReplaced = false;  // the package of the program was upgraded
    std::unique_ptr<WindowProcess> window;
    WindowProcess::Messages::Token listening;
    WindowProcess::Ends::Token endListener;
    int ends = 0;
    std::vector<std::size_t> chosen;
};

}  // namespace kovra
