#include "helper/Loop.h"

#include <sys/epoll.h>
#include <time.h>

#include <csignal>
#include <cstdint>
#include <limits>
#include <system_error>
#include <utility>

namespace kovra::helper {

namespace {

// By default sd-event delays a timer by up to 250 ms in order to wake up less often.
constexpr std::uint64_t accuracyMicroseconds = 1;

void check(int result, const char* what) {
    if (result < 0) throw std::system_error(-result, std::generic_category(), what);
}

// Returns the time of CLOCK_MONOTONIC, rounded up. sd_event_now() would return the time of the last wake-up, which may
// be long past.
std::chrono::microseconds monotonic() {
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return std::chrono::ceil<std::chrono::microseconds>(std::chrono::seconds(now.tv_sec) +
                                                        std::chrono::nanoseconds(now.tv_nsec));
}

}  // namespace

class Loop::Source : public Loop::Watch {
  public:
    Source(Loop& loop, Work work) : loop_(loop), work_(std::make_shared<Work>(std::move(work))) {}

    void watchDescriptor(int descriptor) { add("descriptor", sd_event_add_io, descriptor, EPOLLIN, descriptorIsReady); }
    void watchTime(std::chrono::microseconds when) {
        add("timer", sd_event_add_time, CLOCK_MONOTONIC, static_cast<std::uint64_t>(when.count()), accuracyMicroseconds,
            timeIsReached);
    }
    void watchSignal(int number) {
        sigset_t one;
        sigemptyset(&one);
        sigaddset(&one, number);
        ::sigprocmask(SIG_BLOCK, &one, nullptr);
        add("signal", sd_event_add_signal, number, signalHasArrived);
    }

  private:
    // Calls one of the functions sd_event_add_...(event, &source, arguments..., context).
    template <typename Function, typename... Arguments>
    void add(const char* what, Function function, Arguments... arguments) {
        sd_event_source* source = nullptr;
        check(function(loop_.event_.get(), &source, arguments..., this), what);
        source_.reset(source);
    }

    static int descriptorIsReady(sd_event_source*, int, std::uint32_t, void* context) { return makeReady(context); }
    static int timeIsReached(sd_event_source*, std::uint64_t, void* context) { return makeReady(context); }
    static int signalHasArrived(sd_event_source*, const signalfd_siginfo*, void* context) { return makeReady(context); }
    static int makeReady(void* context) {
        auto* source = static_cast<Source*>(context);
        if (source != nullptr) source->loop_.ready_ = source->work_;
        return 0;
    }

    Loop& loop_;
    std::shared_ptr<Work> work_;
    Handle<sd_event_source, sd_event_source_disable_unref> source_;
};

Loop::Loop() {
    sd_event* event = nullptr;
    check(sd_event_new(&event), "event loop");
    event_.reset(event);
}

Loop::~Loop() = default;

std::unique_ptr<Loop::Watch> Loop::onReadable(int descriptor, Work work) {
    auto source = std::make_unique<Source>(*this, std::move(work));
    source->watchDescriptor(descriptor);
    return source;
}

std::unique_ptr<Loop::Watch> Loop::after(std::chrono::milliseconds delay, Work work) {
    auto source = std::make_unique<Source>(*this, std::move(work));
    source->watchTime(monotonic() + delay);
    return source;
}

std::unique_ptr<Loop::Watch> Loop::onSignal(int number, Work work) {
    auto source = std::make_unique<Source>(*this, std::move(work));
    source->watchSignal(number);
    return source;
}

void Loop::run() {
    isStopped_ = false;
    while (!isStopped_) {
        check(sd_event_run(event_.get(), std::numeric_limits<std::uint64_t>::max()), "event loop");
        if (const auto work = std::exchange(ready_, nullptr)) (*work)();
    }
}

}  // namespace kovra::helper
