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

#include "BLE_kovra/platform/linux/desktop/ProgramSearch.h"
#include "BLE_kovra/platform/linux/loop/Listeners.h"
#include "BLE_kovra/platform/linux/loop/SdEventLoop.h"
#include "BLE_kovra/platform/linux/wire/Messages.h"

namespace kovra {

// The resident program's control of the window process, the only process that loads a toolkit. A message to the window
// process is a state or an event. A state is shown until it is removed or replaced; an event is sent once. The window
// process runs while there is a state, and after an event until release() is called. After the last window, alert or
// event it runs for the time `linger`, so that the next one opens without delay.
//
// No failure of the window process affects the resident program. Writing never blocks, and a newer message replaces an
// unsent older one of the same kind. If the window process is not installed, nothing is shown. If it ends unexpectedly
// while there is a state, it is started again after each of `delays`. After the last of them, it is started only for an
// event or for a state of a new kind.
//
// After each event and each new state, a Ping is sent. A process that does not reply in time with a Pong hangs. It is
// killed and, if there is a state, a new one starts immediately. These starts and those after an unexpected end are
// limited to the number of `delays`. The timer for the reply runs only while a Pong is expected. After an upgrade or a
// downgrade of the package, the window process may be of a version that never replies. Then only a process that has
// replied before can count as one that hangs.
class WindowProcess {
  public:
    // `delays` are the pauses before the restarts. A process that ran for at least `settled` starts again with the
    // first of them, unless it hung from its start on. `linger` is how long a process with nothing to show keeps
    // running. `sign` is the timeout for a Pong. It is longer for the first Pong of a process, `firstSign`, because the
    // process loads the toolkit before it reads.
    struct Timing {
        std::vector<std::chrono::nanoseconds> delays{std::chrono::seconds(1), std::chrono::seconds(5),
                                                     std::chrono::seconds(25)};
        std::chrono::nanoseconds settled = std::chrono::minutes(1);
        std::chrono::nanoseconds linger = std::chrono::seconds(30);
        std::chrono::nanoseconds firstSign = std::chrono::minutes(2);
        std::chrono::nanoseconds sign = std::chrono::seconds(5);
    };

    // `program` returns the absolute path of the program to run; it is called at each start. If the path is empty, no
    // process is started. `isReplaced` returns whether this program's package was upgraded or downgraded since its
    // start.
    WindowProcess(SdEventLoop& loop, std::function<std::string()> program);
    WindowProcess(SdEventLoop& loop, std::function<std::string()> program, Timing timing,
                  std::function<bool()> isReplaced = isOwnProgramReplaced);
    ~WindowProcess();
    WindowProcess(const WindowProcess&) = delete;
    WindowProcess& operator=(const WindowProcess&) = delete;

    // Sends a state now, and to every new process until the state is removed. A state that is equal to the last one of
    // its kind is not sent.
    void show(const ToWindow& state);
    // Each of these functions removes a state. If there is no other state and no event, hideTray() ends the process
    // immediately. The other two end it after `linger`.
    void hideTray();
    void hideWindow();
    void closeAlerts();

    // Sends an event once, and starts a process for it if none is running. If that process ends unexpectedly, the event
    // is lost.
    void send(const ToWindow& event);
    // Call this function when no reply to an event is expected any more. The process then ends after `linger`, unless
    // there is a state.
    void release();

    bool isRunning() const { return running_ != nullptr; }
    // Returns whether there is a state of this type.
    template <typename State>
    bool shows() const {
        return shown_.contains(ToWindow(State()).index());
    }

    // Listeners receive the messages of the window process. They are called from the queue.
    using Messages = Listeners<const ToResident&>;
    [[nodiscard]] Messages::Token listen(Messages::Listener listener) { return messages_.add(std::move(listener)); }
    // Listeners are called from the queue when the process has shown everything that was sent to it until now.
    using Showings = Listeners<>;
    [[nodiscard]] Showings::Token listenForShowing(Showings::Listener listener) {
        return showings_.add(std::move(listener));
    }
    // Listeners are called from the queue when the process has ended unexpectedly or could not be started. They hide
    // the states that the next process must not show.
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
    std::function<bool()> isReplaced_;
    std::map<std::size_t, std::string> shown_;  // the encoded message for each kind of state
    bool isHeld_ = false;                       // kept running because of an event
    Messages messages_;
    Showings showings_;
    Ends ends_;
    std::unique_ptr<Running> running_;
    std::vector<std::unique_ptr<Running>> terminating_;  // they received SIGTERM and are not reaped yet
    Clock::time_point startedAt_;
    // The numbers of the last Ping that was sent, of the last Pong that was received, and of the Pong that the timer
    // waits for.
    std::uint64_t asked_ = 0;
    std::uint64_t received_ = 0;
    std::uint64_t awaited_ = 0;
    bool hasGivenSign_ = false;  // the running process has sent a Pong
    std::unique_ptr<DelayedTask> signTimer_;
    std::size_t tries_ = 0;
    std::unique_ptr<DelayedTask> nextTry_;
    std::unique_ptr<DelayedTask> failureReport_;  // reports a failed start
    std::unique_ptr<DelayedTask> lingerTimer_;    // ends the process when it expires
};

// Returns the path of the window process's program: in the directory of the resident program, as in a build folder, or
// else in libexec. Returns an empty path if the session has no display, because the toolkit would then abort.
std::string windowProgram();

}  // namespace kovra
