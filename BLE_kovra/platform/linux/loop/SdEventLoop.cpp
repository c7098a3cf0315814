#include "BLE_kovra/platform/linux/loop/SdEventLoop.h"

#include <fcntl.h>
#include <sys/epoll.h>

#include <cerrno>
#include <csignal>
#include <ctime>
#include <limits>
#include <system_error>
#include <utility>

#include "BLE_kovra/platform/linux/loop/Lifetime.h"
#include "BLE_kovra/platform/posix/FileDescriptor.h"

namespace kovra {

namespace {

// With its default accuracy, sd-event delays timers in order to combine wake-ups.
constexpr std::uint64_t accuracyMicroseconds = 1;

void check(int result, const char* what) {
    if (result < 0) throw std::system_error(-result, std::generic_category(), what);
}

// Reads the clock. sd_event_now() would return the time of the last wake-up, which may be long past.
std::uint64_t monotonicMicroseconds() {
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    const auto nanoseconds = std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
    return static_cast<std::uint64_t>(std::chrono::ceil<std::chrono::microseconds>(nanoseconds).count());
}

}  // namespace

// A delayed block. The loop owns the timer until it is due; from then on the queued block owns it. A Task only refers
// to the timer.
class SdEventLoop::Timer {
  public:
    Timer(SdEventLoop& loop, Block block) : loop_(loop), block_(std::move(block)) {}

    void arm(std::uint64_t due) {
        sd_event_source* source = nullptr;
        check(sd_event_add_time(loop_.event(), &source, CLOCK_MONOTONIC, due, accuracyMicroseconds, fired, this),
              "timer");
        source_.reset(source);
    }
    void cancel() {
        block_ = nullptr;
        source_.reset();
    }

  private:
    static int fired(sd_event_source*, std::uint64_t, void* context) {
        auto* timer = static_cast<Timer*>(context);
        if (timer != nullptr) timer->post();
        return 0;
    }
    void post() {
        source_.reset();
        const auto pending = loop_.timers_.extract(this);
        loop_.async([timer = pending.mapped()] {
            if (const Block block = std::exchange(timer->block_, nullptr)) block();
        });
    }

    SdEventLoop& loop_;
    Block block_;
    EventSource source_;
};

class SdEventLoop::Task : public DelayedTask {
  public:
    Task(SdEventLoop& loop, std::weak_ptr<Timer> timer) : loop_(loop), timer_(std::move(timer)) {}
    void cancel() override {
        const auto timer = timer_.lock();
        if (!timer) return;
        timer->cancel();
        loop_.timers_.erase(timer.get());
    }

  private:
    SdEventLoop& loop_;
    std::weak_ptr<Timer> timer_;
};

// Watches one descriptor. Its block runs once when the descriptor is ready, and once more after each rearm().
class SdEventLoop::DescriptorWatch : public Watch {
  public:
    DescriptorWatch(SdEventLoop& loop, int descriptor, std::uint32_t events, Block block)
        : loop_(loop), block_(std::move(block)) {
        sd_event_source* source = nullptr;
        check(sd_event_add_io(loop.event(), &source, descriptor, events, ready, this), "descriptor");
        source_.reset(source);
        check(sd_event_source_set_enabled(source, SD_EVENT_ONESHOT), "descriptor");
    }
    void rearm() override { sd_event_source_set_enabled(source_.get(), SD_EVENT_ONESHOT); }

  private:
    static int ready(sd_event_source*, int, std::uint32_t, void* context) {
        auto* watch = static_cast<DescriptorWatch*>(context);
        if (watch != nullptr) watch->loop_.async(watch->run());
        return 0;
    }
    Block run() {
        return lifetime_.guard([this] {
            const Block block = block_;  // the block may destroy the watch
            block();
        });
    }

    SdEventLoop& loop_;
    const Block block_;
    EventSource source_;
    Lifetime lifetime_;
};

// Watches a duplicate of the descriptor. epoll accepts each descriptor only once, and the original may be watched for
// reading.
class SdEventLoop::WritableWatch : public Watch {
  public:
    WritableWatch(SdEventLoop& loop, int descriptor, Block writable)
        : duplicate_(::fcntl(descriptor, F_DUPFD_CLOEXEC, 0)),
          watch_(loop, duplicate_.number(), EPOLLOUT, std::move(writable)) {}
    void rearm() override { watch_.rearm(); }

  private:
    FileDescriptor duplicate_;
    DescriptorWatch watch_;
};

class SdEventLoop::SignalSource : public Signal {
  public:
    SignalSource(SdEventLoop& loop, int number, Block block) : loop_(loop), block_(std::move(block)) {
        sigset_t one;
        sigemptyset(&one);
        sigaddset(&one, number);
        ::sigprocmask(SIG_BLOCK, &one, nullptr);
        sd_event_source* source = nullptr;
        check(sd_event_add_signal(loop.event(), &source, number, received, this), "signal");
        source_.reset(source);
    }

  private:
    static int received(sd_event_source*, const signalfd_siginfo*, void* context) {
        auto* signal = static_cast<SignalSource*>(context);
        if (signal == nullptr || signal->loop_.stopped_) return 0;
        signal->loop_.blocks_.push_front(signal->lifetime_.guard([signal] {
            const Block block = signal->block_;  // the block may destroy the source
            block();
        }));
        return 0;
    }

    SdEventLoop& loop_;
    const Block block_;
    EventSource source_;
    Lifetime lifetime_;
};

SdEventLoop::SdEventLoop() {
    sd_event* event = nullptr;
    check(sd_event_new(&event), "event loop");
    event_.reset(event);
    // Opens the timer descriptor now, so that no later asyncAfter() can fail because descriptors have run out.
    sd_event_source* source = nullptr;
    constexpr auto never = std::numeric_limits<std::uint64_t>::max();
    check(sd_event_add_time(event, &source, CLOCK_MONOTONIC, never, accuracyMicroseconds, nullptr, nullptr), "timer");
    const EventSource opened(source);
}

SdEventLoop::~SdEventLoop() = default;

void SdEventLoop::async(Block block) {
    if (!stopped_) blocks_.push_back(std::move(block));
}

std::unique_ptr<DelayedTask> SdEventLoop::asyncAfter(std::chrono::nanoseconds delay, Block block) {
    auto timer = std::make_shared<Timer>(*this, std::move(block));
    const auto microseconds = std::chrono::ceil<std::chrono::microseconds>(delay).count();
    timer->arm(monotonicMicroseconds() + static_cast<std::uint64_t>(microseconds > 0 ? microseconds : 0));
    timers_.emplace(timer.get(), timer);
    return std::make_unique<Task>(*this, timer);
}

std::unique_ptr<SdEventLoop::Watch> SdEventLoop::watch(int descriptor, Block readable) {
    return std::make_unique<DescriptorWatch>(*this, descriptor, EPOLLIN, std::move(readable));
}

std::unique_ptr<SdEventLoop::Watch> SdEventLoop::watchWritable(int descriptor, Block writable) {
    return std::make_unique<WritableWatch>(*this, descriptor, std::move(writable));
}

std::unique_ptr<SdEventLoop::Signal> SdEventLoop::onSignal(int number, Block block) {
    return std::make_unique<SignalSource>(*this, number, std::move(block));
}

void SdEventLoop::run() {
    runUntil([] { return false; });
}

void SdEventLoop::runUntil(const std::function<bool()>& done) {
    while (!stopped_ && !done()) turn();
}

void SdEventLoop::stop() {
    stopped_ = true;
    blocks_.clear();
    timers_.clear();
}

void SdEventLoop::turn() {
    constexpr auto forever = std::numeric_limits<std::uint64_t>::max();
    check(sd_event_run(event_.get(), blocks_.empty() ? forever : 0), "event loop");
    afterEvents_.call();
    for (std::size_t left = blocks_.size(); left > 0 && !blocks_.empty(); --left) {
        const Block block = std::move(blocks_.front());
        blocks_.pop_front();
        block();
    }
}

}  // namespace kovra
