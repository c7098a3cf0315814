#include "tests/platform/macos/fakes/FakeSignals.h"

#include <dispatch/dispatch.h>

#include <csignal>
#include <cstdint>
#include <memory>
#include <vector>

#include "tests/platform/macos/fakes/FakeObject.h"

struct dispatch_source_type_s {};

const dispatch_source_type_s _dispatch_source_type_signal{};

namespace kovra {

namespace {

// A source starts suspended, as in the real system, and its last reference must not be released before it is resumed.
struct Source : dispatch_source_s {
    int number = 0;
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

void deliver(void* context) {
    const std::unique_ptr<std::shared_ptr<Source>> source(static_cast<std::shared_ptr<Source>*>(context));
    if (!(*source)->isCancelled) (*source)->handler((*source)->context);
}

}  // namespace

void FakeSignals::raise(int number) {
    if (!isIgnored(number)) refuse("a signal that the process does not ignore");
    for (const auto& source : sources) {
        if (source->number == number && source->isResumed && !source->isCancelled)
            ::dispatch_async_f(::dispatch_get_main_queue(), new std::shared_ptr<Source>(source), deliver);
    }
}

std::size_t FakeSignals::held() { return sources.size(); }

}  // namespace kovra

using kovra::refuse;
using kovra::sourceOf;

dispatch_source_t dispatch_source_create(dispatch_source_type_t type, std::uintptr_t handle, std::uintptr_t mask,
                                         dispatch_queue_t queue) {
    if (type != DISPATCH_SOURCE_TYPE_SIGNAL || mask != 0 || queue != ::dispatch_get_main_queue())
        refuse("a source of another kind");
    kovra::sources.push_back(std::make_shared<kovra::Source>());
    kovra::sources.back()->number = static_cast<int>(handle);
    return kovra::sources.back().get();
}

void dispatch_set_context(dispatch_object_t object, void* context) { sourceOf(object).context = context; }

void dispatch_source_set_event_handler_f(dispatch_source_t source, dispatch_function_t handler) {
    sourceOf(source).handler = handler;
}

void dispatch_resume(dispatch_object_t object) {
    if (sourceOf(object).isResumed) refuse("to resume a source twice");
    sourceOf(object).isResumed = true;
}

void dispatch_source_cancel(dispatch_source_t source) { sourceOf(source).isCancelled = true; }

void dispatch_release(dispatch_object_t object) {
    if (!sourceOf(object).isResumed) refuse("to release the last reference to a suspended source");
    std::erase_if(kovra::sources, [&](const auto& source) { return source.get() == object; });
}
