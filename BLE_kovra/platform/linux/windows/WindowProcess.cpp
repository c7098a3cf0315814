#include "BLE_kovra/platform/linux/windows/WindowProcess.h"

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <optional>
#include <utility>

#include "BLE_kovra/platform/linux/desktop/XdgEnvironment.h"
#include "BLE_kovra/platform/linux/wire/Encoding.h"
#include "BLE_kovra/platform/linux/wire/LineSocket.h"
#include "BLE_kovra/platform/posix/ChildProcess.h"
#include "BLE_kovra/platform/posix/FileDescriptor.h"
#include "BLE_kovra/platform/posix/Path.h"

namespace kovra {

namespace {

// Returns the index of the message type. A newer message replaces an unsent older one with the same index.
template <typename State>
std::size_t kindOf() {
    return ToWindow(State()).index();
}

void cancel(std::unique_ptr<DelayedTask>& task) {
    if (task) task->cancel();
    task.reset();
}

}  // namespace

// A running window process, with the resident program's end of the socket.
class WindowProcess::Running {
  public:
    using Block = MainQueue::Block;

    // Returns null if the program cannot be started or the system is out of resources.
    static std::unique_ptr<Running> start(SdEventLoop& loop, const std::string& program) {
        std::array<int, 2> ends{-1, -1};
        if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) return nullptr;
        const FileDescriptor theirs(ends[1]);
        auto socket = std::make_unique<FileDescriptor>(ends[0]);
        Spawn how;
        how.give(theirs.number(), windowSocket);
        how.giveNothing(STDIN_FILENO);
        how.giveNothing(STDOUT_FILENO);
        auto child = ChildProcess::start(how, program, {});
        if (!child) return nullptr;
        return std::make_unique<Running>(loop, std::move(child), std::move(socket));
    }

    Running(SdEventLoop& loop, std::unique_ptr<ChildProcess> child, std::unique_ptr<FileDescriptor> socket)
        : loop_(loop), child_(std::move(child)), socket_(std::move(socket)) {}

    // Calls `message` when there is something to read or the other end is closed, and `end` when the process has
    // exited.
    void listen(const Block& message, const Block& end) {
        reading_ = loop_.watch(socket_->number(), message);
        ending_ = loop_.watch(child_->descriptor(), end);
    }
    std::optional<std::vector<std::string>> receive() {
        reading_->rearm();
        return receiveLines(socket_->number(), reader_);
    }

    void send(std::size_t kind, std::string line) {
        outbox_.put(kind, std::move(line));
        if (!writing_) flush();
    }

    void kill() const { child_->kill(); }

    // Closes the connection and terminates the process. Calls `reaped` after the process has been reaped.
    void terminate(const Block& reaped) {
        reading_.reset();
        writing_.reset();
        socket_.reset();
        child_->terminate();
        ending_.reset();  // epoll accepts each descriptor only once, so remove this watch before adding the next
        ending_ = loop_.watch(child_->descriptor(), [this, reaped] {
            child_->reap();
            reaped();
        });
    }

  private:
    // Ignores errors: a window process ends when its connection is closed, and its end is reported.
    void flush() {
        if (outbox_.flush(socket_->number()) != Outbox::State::waiting)
            writing_.reset();
        else if (writing_)
            writing_->rearm();
        else
            writing_ = loop_.watchWritable(socket_->number(), [this] { flush(); });
    }

    SdEventLoop& loop_;
    std::unique_ptr<ChildProcess> child_;
    std::unique_ptr<FileDescriptor> socket_;
    LineReader reader_{longestToResident};
    Outbox outbox_;
    std::unique_ptr<SdEventLoop::Watch> reading_;
    std::unique_ptr<SdEventLoop::Watch> writing_;
    std::unique_ptr<SdEventLoop::Watch> ending_;
};

WindowProcess::WindowProcess(SdEventLoop& loop, std::function<std::string()> program)
    : WindowProcess(loop, std::move(program), Timing()) {}

WindowProcess::WindowProcess(SdEventLoop& loop, std::function<std::string()> program, Timing timing,
                             std::function<bool()> isReplaced)
    : loop_(loop), program_(std::move(program)), timing_(std::move(timing)), isReplaced_(std::move(isReplaced)) {}

WindowProcess::~WindowProcess() {
    for (auto* task : {&nextTry_, &failureReport_, &lingerTimer_, &signTimer_}) cancel(*task);
}

void WindowProcess::show(const ToWindow& state) {
    const auto [shown, isNew] = shown_.try_emplace(state.index());
    std::string line = encode(state);
    if (!isNew && shown->second == line) return;
    shown->second = std::move(line);
    if (isNew) {
        cancel(lingerTimer_);
        tries_ = 0;
        if (!running_) return start();  // also sends the state
    }
    if (!running_) return;
    running_->send(state.index(), shown->second);
    askForSign();
}

void WindowProcess::hideTray() {
    if (hide(kindOf<ShowTray>(), HideTray())) endIfIdle();
}

void WindowProcess::hideWindow() {
    if (hide(kindOf<ShowWindow>(), HideWindow())) linger();
}

void WindowProcess::closeAlerts() {
    if (hide(kindOf<ShowAlerts>(), ShowAlerts())) linger();
}

void WindowProcess::send(const ToWindow& event) {
    if (!running_) start();
    if (!running_) return;
    isHeld_ = true;
    running_->send(event.index(), encode(event));
    askForSign();
}

void WindowProcess::release() {
    if (std::exchange(isHeld_, false)) linger();
}

void WindowProcess::start() {
    cancel(nextTry_);
    startedAt_ = Clock::now();
    const std::string program = program_();
    running_ = program.empty() ? nullptr : Running::start(loop_, program);
    if (!running_) {
        cancel(failureReport_);
        failureReport_ = loop_.asyncAfter({}, [this] {
            if (!running_) ends_.call();
        });
        return startAgainLater();
    }
    running_->listen([this] { receive(); },
                     [this] {
                         receive();  // read its last messages
                         if (running_) ended();
                     });
    hasGivenSign_ = false;
    for (const auto& [kind, line] : shown_) running_->send(kind, line);
    askForSign();
}

void WindowProcess::receive() {
    const auto lines = running_->receive();
    if (!lines) return ended();
    for (const std::string& line : *lines) {
        const auto message = decodeToResident(line);
        if (!message) continue;
        if (const auto* sign = std::get_if<Pong>(&*message))
            received(*sign);
        else
            messages_.call(*message);
    }
}

void WindowProcess::askForSign() {
    running_->send(kindOf<Ping>(), encode(Ping{++asked_}));
    if (!signTimer_) awaitSign();
}

void WindowProcess::awaitSign() {
    awaited_ = asked_;
    signTimer_ = loop_.asyncAfter(hasGivenSign_ ? timing_.sign : timing_.firstSign, [this] { signIsOverdue(); });
}

void WindowProcess::received(const Pong& sign) {
    hasGivenSign_ = true;
    received_ = sign.number;
    if (signTimer_) {
        cancel(signTimer_);
        if (received_ != asked_) awaitSign();
    }
    if (received_ == asked_) showings_.call();
}

void WindowProcess::signIsOverdue() {
    signTimer_.reset();
    receive();  // a Pong may have arrived while this program was stopped
    if (!running_ || signTimer_) return;
    if (received_ < awaited_)
        replace();
    else if (received_ != asked_)
        awaitSign();
}

// Keeps the states, so that the new process shows an open window again.
void WindowProcess::replace() {
    if (!hasGivenSign_ && isReplaced_()) return;
    running_->kill();
    end();
    if (hasGivenSign_ && Clock::now() - startedAt_ >= timing_.settled) tries_ = 0;
    if (shown_.empty()) return;
    if (tries_ == timing_.delays.size()) return ends_.call();
    ++tries_;
    start();
}

void WindowProcess::ended() {
    end();
    if (Clock::now() - startedAt_ >= timing_.settled) tries_ = 0;
    ends_.call();
    startAgainLater();
}

void WindowProcess::startAgainLater() {
    if (running_ || shown_.empty() || tries_ == timing_.delays.size()) return;
    nextTry_ = loop_.asyncAfter(timing_.delays[tries_++], [this] { start(); });
}

// Returns whether the state was shown. `hideMessage` replaces the state if the process has not received it yet.
bool WindowProcess::hide(std::size_t kind, const ToWindow& hideMessage) {
    if (shown_.erase(kind) == 0) return false;
    if (shown_.empty()) cancel(nextTry_);
    if (running_) running_->send(kind, encode(hideMessage));
    return true;
}

void WindowProcess::linger() {
    cancel(lingerTimer_);
    lingerTimer_ = loop_.asyncAfter(timing_.linger, [this] {
        lingerTimer_.reset();
        endIfIdle();
    });
}

void WindowProcess::endIfIdle() {
    if (running_ && shown_.empty() && !isHeld_ && !lingerTimer_) end();
}

void WindowProcess::end() {
    isHeld_ = false;
    cancel(lingerTimer_);
    cancel(signTimer_);
    Running* process = terminating_.emplace_back(std::move(running_)).get();
    process->terminate(
        [this, process] { std::erase_if(terminating_, [&](const auto& each) { return each.get() == process; }); });
}

std::string windowProgram() {
    if (currentDesktop() == Desktop::none) return {};
    constexpr const char* name = "ble-kovra-ui";
    const auto beside = folderOf(ownProgram()) + '/' + name;
    return findProgram(beside).value_or(std::string(KOVRA_LIBEXEC) + '/' + name);
}

}  // namespace kovra
