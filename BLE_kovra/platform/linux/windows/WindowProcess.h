#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "BLE_kovra/platform/linux/loop/Listeners.h"
#include "BLE_kovra/platform/linux/loop/SdEventLoop.h"
#include "BLE_kovra/platform/linux/wire/Messages.h"

namespace kovra {

// The window process, as the resident program has it: one for all that needs a toolkit. It runs while there is
// something to show, and shows what was given last; it is also started for an event, and then held until it is
// released. After the last window, alert or event it is kept for a while, so that the next one opens at once.
//
// Nothing that becomes of it harms the resident program: writing never waits for it, what it has not taken yet is
// replaced by what is newer, and where it dies, or is not installed, nothing is shown. One that dies is started again
// after a while, a longer one each time, and is then given up until there is something to show anew.
class WindowProcess {
  public:
    // How often and when a process that died is started again, and how long one without a window is kept. One that
    // lived for `settled` has its tries back.
    struct Timing {
        std::vector<std::chrono::nanoseconds> delays{std::chrono::seconds(1), std::chrono::seconds(5),
                                                     std::chrono::seconds(25)};
        std::chrono::nanoseconds settled = std::chrono::minutes(1);
        std::chrono::nanoseconds linger = std::chrono::seconds(30);
    };

    // `program` tells the absolute path, and is asked at each start. Empty: none can be started.
    WindowProcess(SdEventLoop& loop, std::function<std::string()> program);
    WindowProcess(SdEventLoop& loop, std::function<std::string()> program, Timing timing);
    ~WindowProcess();
    WindowProcess(const WindowProcess&) = delete;
    WindowProcess& operator=(const WindowProcess&) = delete;

    // A state, told again to each process that is started. It is not told twice in a row.
    void show(const ToWindow& state);
    // A state that holds no more. Without the icon the process ends at once if there is nothing else, without the
    // others after a while.
    void hideTray();
    void hideWindow();
    void closeAlerts();

    // An event, told once: it dies with the process that was there or was started for it.
    void send(const ToWindow& event);
    // Nobody waits for what it says to an event any more. It ends after a while, unless there is something to show.
    void release();

    bool isRunning() const { return running_ != nullptr; }

    // What it says. From the queue, as is the next.
    using Messages = Listeners<const ToResident&>;
    [[nodiscard]] Messages::Token listen(Messages::Listener listener) { return messages_.add(std::move(listener)); }
    // It died, or cannot be started. What is not to be shown by the next one is to be hidden now.
    using Ends = Listeners<>;
    [[nodiscard]] Ends::Token listenForEnd(Ends::Listener listener) { return ends_.add(std::move(listener)); }

  private:
    class Running;
    using Clock = std::chrono::steady_clock;

    void start();
    void startAgainLater();
    void receive();
    void ended();
    bool hide(std::size_t kind, const ToWindow& farewell);
    void linger();
    void endIfIdle();
    void end();

    SdEventLoop& loop_;
    std::function<std::string()> program_;
    Timing timing_;
    std::map<std::size_t, std::string> shown_;  // the line of each kind of state
    bool isHeld_ = false;                       // for an event
    Messages messages_;
    Ends ends_;
    std::unique_ptr<Running> running_;
    std::vector<std::unique_ptr<Running>> leaving_;  // told to end, and not yet gone
    Clock::time_point startedAt_;
    std::size_t tries_ = 0;
    std::unique_ptr<DelayedTask> nextTry_;
    std::unique_ptr<DelayedTask> failure_;    // to be told
    std::unique_ptr<DelayedTask> lingering_;  // until when the process is kept
};

// Where the window process is installed: beside the resident program, as in a build folder, or else in libexec. Empty
// where the session has no display: the toolkit would only abort, with lines of its own.
std::string windowProgram();

}  // namespace kovra
