#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <functional>
#include <optional>
#include <sstream>
#include <string>
#include <variant>
#include <vector>

#include "BLE_kovra/platform/linux/loop/SdEventLoop.h"
#include "BLE_kovra/platform/linux/windows/WindowProcess.h"
#include "BLE_kovra/platform/linux/wire/Encoding.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra {

// A window process without a toolkit, real in all else: it notes what it is told, and says what the test has it say.
class StandInWindow {
  public:
    static constexpr auto linger = std::chrono::milliseconds(200);

    explicit StandInWindow(SdEventLoop& turned) : loop(turned) {
        writeFile(program(), "#!/bin/sh\nhere='" + folder_.path().string() + R"('
: >$here/say.$$
tail -f -n +1 -s 0.01 --pid=$$ $here/say.$$ >&3 &
: >$here/told.$$
echo $$ >>$here/starts
exec cat <&3 >$here/told.$$
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

    // From here on there is no such program.
    void remove() const { std::filesystem::remove(program()); }
    // Of the newest process; 0 before the first, and once that was killed.
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
    bool isThere() const { return process_->isRunning(); }

    void send(const ToResident& message) {
        turnUntil([&] { return pid() != 0; });
        std::ofstream(folder_ / ("say." + std::to_string(pid())), std::ios::app) << encode(message) << std::flush;
    }
    // What the newest process was told, in order.
    template <typename Message>
    std::vector<Message> told() const {
        std::vector<Message> messages;
        for (const std::string& line : lines("told." + std::to_string(pid()))) {
            const auto message = decodeToWindow(line);
            EXPECT_TRUE(message) << line;
            if (message && std::holds_alternative<Message>(*message)) messages.push_back(std::get<Message>(*message));
        }
        return messages;
    }
    template <typename Message>
    std::optional<Message> newest() const {
        const auto messages = told<Message>();
        return messages.empty() ? std::nullopt : std::optional(messages.back());
    }
    // The window or alerts are to be seen, as a real one has it.
    bool showsWindow() const {
        bool shows = false;
        for (const std::string& line : lines("told." + std::to_string(pid()))) {
            const auto message = decodeToWindow(line);
            if (!message) continue;
            shows = (shows || std::holds_alternative<ShowWindow>(*message)) &&
                    !std::holds_alternative<HideWindow>(*message);
        }
        return shows && isThere();
    }
    std::vector<ShowAlerts::Open> alerts() const {
        const auto shown = newest<ShowAlerts>();
        return shown && isThere() ? shown->alerts : std::vector<ShowAlerts::Open>();
    }

    // Looks again each few milliseconds, for what no descriptor tells of.
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
    std::optional<WindowProcess> process_{
        std::in_place, loop, [this] { return program(); },
        WindowProcess::Timing{{std::chrono::milliseconds(10)}, std::chrono::hours(1), linger}};
};

}  // namespace kovra
