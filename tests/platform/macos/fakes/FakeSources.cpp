#include "tests/platform/macos/fakes/FakeSources.h"

#include <dispatch/dispatch.h>

#include <csignal>
#include <cstdint>
#include <memory>
#include <vector>

#include "tests/platform/macos/fakes/FakeObject.h"
#include "tests/platform/macos/fakes/FakeRunLoop.h"

struct dispatch_source_type_s {};

const dispatch_source_type_s _dispatch_source_type_signal{};
const dispatch_source_type_s _dispatch_source_type_timer{};

namespace kovra {

namespace {

// A source starts suspended, as in the real system, and its last reference must not be released before it is resumed.
struct Source : dispatch_source_s {
    dispatch_source_type_t type = nullptr;
    int number = 0;         // of the signal
    bool isStrict = false;  // the timer
    std::int64_t due = 0;   // of the timer, in nanoseconds on the clock of dispatch_time()
    void* context = nullptr;
    dispatch_function_t handler = nullptr;
    bool isResumed = false;
    bool isCancelled = false;
};

std::vector<std::shared_ptr<Source>> sources;

Source& sourceOf(dispatch_object_t object) {
    for (const auto& source : sources) {
        if (source.get() == object) return *source;
    }
    refuse("a source that does not exist or was released");
}

bool isIgnored(int number) {
    struct sigaction action{};
    return ::sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

void startTimer(const std::shared_ptr<Source>& source) {
    FakeRunLoop::addTimer(source->due, source->isStrict, [source] {
        if (!source->isCancelled) source->handler(source->context);
    });
}

void deliver(void* context) {
    const std::unique_ptr<std::shared_ptr<Source>> source(static_cast<std::shared_ptr<Source>*>(context));
    if (!(*source)->isCancelled) (*source)->handler((*source)->context);
}

}  // namespace

void FakeSources::raise(int number) {
    if (!isIgnored(number)) refuse("a signal that the process does not ignore");
    for (const auto& source : sources) {
        if (source->type == DISPATCH_SOURCE_TYPE_SIGNAL && source->number == number && source->isResumed &&
            !source->isCancelled)
            ::dispatch_async_f(::dispatch_get_main_queue(), new std::shared_ptr<Source>(source), deliver);
    }
}

std::size_t FakeSources::held() { return sources.size(); }

}  // namespace kovra

using kovra::refuse;
using kovra::sourceOf;

dispatch_source_t dispatch_source_create(dispatch_source_type_t type, std::uintptr_t handle, std::uintptr_t mask,
                                         dispatch_queue_t queue) {
    const bool isTimer = type == DISPATCH_SOURCE_TYPE_TIMER;
    const bool isKnown =
        isTimer ? handle == 0 && mask <= DISPATCH_TIMER_STRICT : type == DISPATCH_SOURCE_TYPE_SIGNAL && mask == 0;
    if (!isKnown || queue != ::dispatch_get_main_queue()) refuse("a source of another kind");
    const auto source = std::make_shared<kovra::Source>();
    source->type = type;
    source->number = static_cast<int>(handle);
    source->isStrict = mask == DISPATCH_TIMER_STRICT;
    kovra::sources.push_back(source);
    return source.get();
}

void dispatch_set_context(dispatch_object_t object, void* context) { sourceOf(object).context = context; }

void dispatch_source_set_event_handler_f(dispatch_source_t source, dispatch_function_t handler) {
    sourceOf(source).handler = handler;
}

void dispatch_resume(dispatch_object_t object) {
    if (sourceOf(object).isResumed) refuse("to resume a source twice");
    sourceOf(object).isResumed = true;
    for (const auto& source : kovra::sources) {
        if (source.get() == object && source->type == DISPATCH_SOURCE_TYPE_TIMER) kovra::startTimer(source);
    }
}

void dispatch_source_set_timer(dispatch_source_t object, dispatch_time_t start, std::uint64_t interval,
                               std::uint64_t leeway) {
    kovra::Source& source = sourceOf(object);
    if (source.type != DISPATCH_SOURCE_TYPE_TIMER || source.isResumed) refuse("a timer that cannot be set");
    if (interval != DISPATCH_TIME_FOREVER) refuse("a timer that fires again and again");
    source.due = static_cast<std::int64_t>(start + leeway);
}

void dispatch_source_cancel(dispatch_source_t source) { sourceOf(source).isCancelled = true; }

void dispatch_release(dispatch_object_t object) {
    if (!sourceOf(object).isResumed) refuse("to release the last reference to a suspended source");
    std::erase_if(kovra::sources, [&](const auto& source) { return source.get() == object; });
}
