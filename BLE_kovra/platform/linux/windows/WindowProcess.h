#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
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

// The resident program's control of the window process, the only process that loads a toolkit. The window process runs
// while there is something to show, and always shows the newest state. It also starts for an event, and then runs until
// release() is called. After the last window, alert or event it keeps running for a while, so that the next one opens
// without delay.
//
// No failure of the window process affects the resident program. Writing never blocks, and a newer message replaces an
// unsent older one of the same kind. If the process dies or is not installed, nothing is shown. A process that dies is
// started again, a few times, after increasing delays. After that it stays down until an event or a new kind of state
// is to be shown.
//
// Each event and each new state is followed by a request for a sign of life. A process that gives none hangs. It is
// killed, and a new one starts immediately with all states, also a few times at most. No timer runs without a request.
class WindowProcess {
  public:
    // The delays before the restarts, and how long a process with nothing to show is kept. A process that ran for at
    // least `settled` starts again with the first delay. `sign` is the time for a sign of life. The first one of a
    // process takes longer, because the process loads the toolkit before it reads.
    struct Timing {
        std::vector<std::chrono::nanoseconds> delays{std::chrono::seconds(1), std::chrono::seconds(5),
                                                     std::chrono::seconds(25)};
        std::chrono::nanoseconds settled = std::chrono::minutes(1);
        std::chrono::nanoseconds linger = std::chrono::seconds(30);
        std::chrono::nanoseconds firstSign = std::chrono::minutes(2);
        std::chrono::nanoseconds sign = std::chrono::seconds(5);
    };

    // `program` returns the absolute path of the program to run; it is called at each start. If the path is empty, no
    // process is started.
    WindowProcess(SdEventLoop& loop, std::function<std::string()> program);
    WindowProcess(SdEventLoop& loop, std::function<std::string()> program, Timing timing);
    ~WindowProcess();
    WindowProcess(const WindowProcess&) = delete;
    WindowProcess& operator=(const WindowProcess&) = delete;

    // Sends a state, and sends it again to every new process. A state that is equal to the last one of its kind is not
    // sent.
    void show(const ToWindow& state);
    // Each of these functions removes a state. If nothing else needs the process, hideTray() ends it immediately; the
    // other two end it after a while.
    void hideTray();
    void hideWindow();
    void closeAlerts();

    // Sends an event once, and starts a process for it if none is running. If that process dies, the event is lost.
    void send(const ToWindow& event);
    // Call it when no reply to an event is expected any more. The process then ends after a while, unless there is
    // something to show.
    void release();

    bool isRunning() const { return running_ != nullptr; }

    // Listeners receive the messages of the window process. They are called from the queue, like the listeners for its
    // end.
    using Messages = Listeners<const ToResident&>;
    [[nodiscard]] Messages::Token listen(Messages::Listener listener) { return messages_.add(std::move(listener)); }
    // Called when the process died or could not be started. A listener hides here what the next process must not show.
    using Ends = Listeners<>;
    [[nodiscard]] Ends::Token listenForEnd(Ends::Listener listener) { return ends_.add(std::move(listener)); }

  private:
    class Running;
    using Clock = std::chrono::steady_clock;

    void start();
    void startAgainLater();
    void receive();
    void askForSign();
    void awaitSign();
    void received(const Pong& sign);
    void signIsOverdue();
    void replace();
    void ended();
    bool hide(std::size_t kind, const ToWindow& hideMessage);
    void linger();
    void endIfIdle();
    void end();

    SdEventLoop& loop_;
    std::function<std::string()> program_;
    Timing timing_;
    std::map<std::size_t, std::string> shown_;  // the encoded message for each kind of state
    bool isHeld_ = false;                       // kept running because of an event
    Messages messages_;
    Ends ends_;
    std::unique_ptr<Running> running_;
    std::vector<std::unique_ptr<Running>> terminating_;  // asked to terminate, and not reaped yet
    Clock::time_point startedAt_;
    // Numbers of signs of life: the last one that was asked for and that was received, and the one that is waited for.
    std::uint64_t asked_ = 0;
    std::uint64_t received_ = 0;
    std::uint64_t awaited_ = 0;
    bool hasGivenSign_ = false;  // since it was started
    std::unique_ptr<DelayedTask> signTimer_;
    std::size_t tries_ = 0;
    std::unique_ptr<DelayedTask> nextTry_;
    std::unique_ptr<DelayedTask> failureReport_;  // reports a failed start
    std::unique_ptr<DelayedTask> lingerTimer_;    // ends the process when it expires
};

// The path of the window process's program: in the directory of the resident program, as in a build folder, or else in
// libexec. Empty if the session has no display, because the toolkit would only abort and print messages.
std::string windowProgram();

}  // namespace kovra
