#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <functional>
#include <optional>
#include <ostream>
#include <sstream>
#include <string>
#include <variant>
#include <vector>

#include "BLE_kovra/platform/linux/loop/SdEventLoop.h"
#include "BLE_kovra/platform/linux/windows/WindowProcess.h"
#include "BLE_kovra/platform/linux/wire/Encoding.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra {

// A fake window process without a toolkit, running as a real child process. It records the messages that it receives,
// and sends those that the test passes to send().
class StandInWindow {
  public:
    static constexpr auto linger = std::chrono::milliseconds(200);

    explicit StandInWindow(SdEventLoop& turned) : loop(turned) {
        writeFile(program(), "#!/bin/sh\nhere='" + folder_.path().string() + R"('
: >$here/say.$$
tail -f -n +1 -s 0.01 --pid=$$ $here/say.$$ >&3 &
: >$here/received.$$
echo $$ >>$here/starts
exec cat <&3 >$here/received.$$
)");
        ::chmod(program().c_str(), 0755);
    }
    ~StandInWindow() {
        process_.reset();
        while (::waitpid(-1, nullptr, 0) > 0) {
        }
    }
    StandInWindow(const StandInWindow&) = delete;
    StandInWindow& operator=(const StandInWindow&) = delete;

    WindowProcess& process() { return *process_; }

    // Deletes the program, so that it can no longer be started.
    void remove() const { std::filesystem::remove(program()); }
    // Returns the process ID of the newest process, or 0 before the first start and after kill().
    pid_t pid() const {
        const auto started = lines("starts");
        const pid_t newest = started.empty() ? 0 : std::stoi(started.back());
        return newest == killed_ ? 0 : newest;
    }
    void kill() {
        killed_ = pid();
        ::kill(killed_, SIGKILL);
    }
    std::size_t starts() const { return lines("starts").size(); }
    bool isRunning() const { return process_->isRunning(); }

    void send(const ToResident& message) {
        turnUntil([&] { return pid() != 0; });
        std::ofstream(folder_ / ("say." + std::to_string(pid())), std::ios::app) << encode(message) << std::flush;
    }
    // Returns the messages of this type that the newest process received, in order.
    template <typename Message>
    std::vector<Message> received() const {
        std::vector<Message> messages;
        for (const std::string& line : lines("received." + std::to_string(pid()))) {
            const auto message = decodeToWindow(line);
            EXPECT_TRUE(message) << line;
            if (message && std::holds_alternative<Message>(*message)) messages.push_back(std::get<Message>(*message));
        }
        return messages;
    }
    template <typename Message>
    std::optional<Message> newest() const {
        const auto messages = received<Message>();
        return messages.empty() ? std::nullopt : std::optional(messages.back());
    }
    // Returns whether a real process would now show the window.
    bool showsWindow() const {
        bool shows = false;
        for (const std::string& line : lines("received." + std::to_string(pid()))) {
            const auto message = decodeToWindow(line);
            if (!message) continue;
            shows = (shows || std::holds_alternative<ShowWindow>(*message)) &&
                    !std::holds_alternative<HideWindow>(*message);
        }
        return shows && isRunning();
    }
    std::vector<ShowAlerts::Open> alerts() const {
        const auto shown = newest<ShowAlerts>();
        return shown && isRunning() ? shown->alerts : std::vector<ShowAlerts::Open>();
    }

    // Checks the condition every few milliseconds, because no descriptor reports what the process writes to its files.
    void turnUntil(const std::function<bool()>& condition) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        bool holds = false;
        while (!(holds = condition()) && std::chrono::steady_clock::now() < end) let(std::chrono::milliseconds(2));
        EXPECT_TRUE(holds);
    }
    void let(std::chrono::nanoseconds duration) {
        bool done = false;
        loop.asyncAfter(duration, [&] { done = true; });
        loop.runUntil([&] { return done; });
    }

    SdEventLoop& loop;

  private:
    std::string program() const { return folder_ / "program"; }
    std::vector<std::string> lines(const std::string& name) const {
        std::istringstream text(folder_.names().contains(name) ? readFile(folder_ / name) : "");
        std::vector<std::string> found;
        for (std::string line; std::getline(text, line) && !text.eof();) found.push_back(line);
        return found;
    }

    const TempFolder folder_;
    pid_t killed_ = -1;
    std::optional<WindowProcess> process_{std::in_place, loop, [this] { return program(); },
                                          WindowProcess::Timing{{std::chrono::milliseconds(10)},
                                                                std::chrono::hours(1),
                                                                linger,
                                                                std::chrono::hours(1),
                                                                std::chrono::hours(1)}};
};

}  // namespace kovra
