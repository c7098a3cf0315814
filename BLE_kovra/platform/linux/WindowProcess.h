#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "BLE_kovra/platform/linux/SdEventLoop.h"
#include "BLE_kovra/platform/linux/wire/Messages.h"

namespace kovra {

// The window process, as the resident program has it: it runs while there is something to show, and shows what was
// given last.
//
// Nothing that becomes of it harms the resident program: writing never waits for it, what it has not taken yet is
// replaced by what is newer, and where it dies, or is not installed, nothing is shown. One that dies is started again
// after a while, a longer one each time, and is then given up until there is something to show anew.
class WindowProcess {
  public:
    // How often and when a process that died is started again. One that lived for `settled` has its tries back.
    struct Patience {
        std::vector<std::chrono::nanoseconds> delays{std::chrono::seconds(1), std::chrono::seconds(5),
                                                     std::chrono::seconds(25)};
        std::chrono::nanoseconds settled = std::chrono::minutes(1);
    };

    // `program` tells the absolute path, and is asked at each start.
    WindowProcess(SdEventLoop& loop, std::function<std::string()> program);
    WindowProcess(SdEventLoop& loop, std::function<std::string()> program, Patience patience);
    ~WindowProcess();
    WindowProcess(const WindowProcess&) = delete;
    WindowProcess& operator=(const WindowProcess&) = delete;

    void show(const ToWindow& what);
    // The process ends.
    void showNothing();

    // Both are called from the queue.
    std::function<void(const ToResident& message)> onMessage;
    std::function<void()> onDied;

  private:
    class Running;
    using Clock = std::chrono::steady_clock;

    void start();
    void startAgainLater();
    void receive();
    void died();
    void letGo();

    SdEventLoop& loop_;
    std::function<std::string()> program_;
    Patience patience_;
    std::map<std::size_t, std::string> shown_;  // the line of each kind of message
    std::unique_ptr<Running> running_;
    std::vector<std::unique_ptr<Running>> leaving_;  // told to end, and not yet gone
    Clock::time_point startedAt_;
    std::size_t tries_ = 0;
    std::unique_ptr<DelayedTask> nextTry_;
};

// Where the window process is installed: beside the resident program, as in a build folder, or else in libexec.
std::string windowProgram();

}  // namespace kovra
