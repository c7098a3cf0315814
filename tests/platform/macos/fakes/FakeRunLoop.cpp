#include "tests/platform/macos/fakes/FakeRunLoop.h"

#include <dispatch/dispatch.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <deque>
#include <limits>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include "tests/platform/macos/fakes/FakeRunLoopSource.h"
#include "tests/platform/macos/fakes/FakeValues.h"

using kovra::FakeObject;
using kovra::fakeObject;
using kovra::FakeRunLoop;
using kovra::FakeType;
using kovra::refuse;

struct __CFFileDescriptor : FakeObject {
    __CFFileDescriptor(int ours, CFFileDescriptorCallBack callback, void* info)
        : FakeObject(FakeType::descriptor), number(ours), readable(callback), context(info) {}
    const int number;
    const CFFileDescriptorCallBack readable;
    void* const context;
    bool isValid = true;
    bool isEnabled = false;
};

struct __CFRunLoop : FakeObject {
    __CFRunLoop() : FakeObject(FakeType::loop, Life::endless) {}
};

struct dispatch_queue_s {};

namespace {

using Clock = std::chrono::steady_clock;

using Work = std::function<void()>;

struct Timer {
    bool isStrict;
    Work due;
};

__CFRunLoop theLoop;
std::mutex blocksAccess;  // any thread may queue a block
std::deque<Work> blocks;
std::multimap<std::int64_t, Timer> timers;  // by due time on the clock, in nanoseconds
std::vector<std::pair<CFRunLoopSourceRef, CFRunLoopMode>> sources;
std::vector<FakeRunLoop::Source*> others;
std::deque<std::function<void()>> events;
bool isInABlock = false;
bool isNapping = false;

std::int64_t now() { return std::chrono::nanoseconds(Clock::now().time_since_epoch()).count(); }

void push(Work block) {
    const std::lock_guard lock(blocksAccess);
    blocks.push_back(std::move(block));
}

std::size_t blockCount() {
    const std::lock_guard lock(blocksAccess);
    return blocks.size();
}

Work takeBlock() {
    const std::lock_guard lock(blocksAccess);
    Work block = std::move(blocks.front());
    blocks.pop_front();
    return block;
}

// Returns the first timer that may fire.
auto nextTimer() {
    return std::ranges::find_if(timers, [](const auto& timer) { return timer.second.isStrict || !isNapping; });
}

void queueTimersThatAreDue() {
    for (auto next = nextTimer(); next != timers.end() && next->first <= now(); next = nextTimer()) {
        push(std::move(next->second.due));
        timers.erase(next);
    }
}

bool runBlocks(CFRunLoopMode mode) {
    queueTimersThatAreDue();
    const std::size_t count = blockCount();
    if (isInABlock || count == 0 || !FakeRunLoop::fires(kCFRunLoopCommonModes, mode)) return false;
    isInABlock = true;
    for (std::size_t left = count; left > 0; --left) takeBlock()();
    isInABlock = false;
    return true;
}

bool fireOthers(CFRunLoopMode mode) {
    bool hasFired = false;
    for (FakeRunLoop::Source* source : std::vector(others)) {
        if (std::ranges::find(others, source) == others.end()) continue;
        if (!source->firesIn(mode) || !source->hasEvents()) continue;
        source->fire();
        hasFired = true;
    }
    for (const auto& [source, addedTo] : std::vector(sources)) {
        CFRetain(source);  // handling an event may remove it
        if (source->handle && FakeRunLoop::fires(addedTo, mode)) hasFired |= source->handle();
        CFRelease(source);
    }
    return hasFired;
}

std::vector<CFFileDescriptorRef> descriptorsIn(CFRunLoopMode mode) {
    std::vector<CFFileDescriptorRef> watched;
    for (const auto& [source, addedTo] : sources) {
        if (source->handle) continue;
        auto& descriptor = fakeObject<__CFFileDescriptor>(source->owner, FakeType::descriptor);
        if (descriptor.isEnabled && FakeRunLoop::fires(addedTo, mode)) watched.push_back(&descriptor);
    }
    return watched;
}

// Returns the descriptors that become readable within the timeout, in milliseconds.
std::vector<CFFileDescriptorRef> readableWithin(CFRunLoopMode mode, int timeout) {
    const auto watched = descriptorsIn(mode);
    std::vector<pollfd> polled;
    for (const CFFileDescriptorRef descriptor : watched) polled.push_back({descriptor->number, POLLIN, 0});
    std::vector<CFFileDescriptorRef> found;
    if (::poll(polled.data(), polled.size(), timeout) <= 0) return found;
    for (std::size_t i = 0; i < polled.size(); ++i) {
        if (polled[i].revents != 0) found.push_back(watched[i]);
    }
    return found;
}

bool fireDescriptors(CFRunLoopMode mode) {
    const auto found = readableWithin(mode, 0);
    for (const CFFileDescriptorRef descriptor : found) CFRetain(descriptor);
    for (const CFFileDescriptorRef descriptor : found) {
        if (descriptor->isEnabled) {
            descriptor->isEnabled = false;
            descriptor->readable(descriptor, kCFFileDescriptorReadCallBack, descriptor->context);
        }
        CFRelease(descriptor);
    }
    return !found.empty();
}

void waitForEvents(CFRunLoopMode mode, std::int64_t end) {
    std::int64_t wake = end;
    if (const auto next = nextTimer(); next != timers.end() && !isInABlock) wake = std::min(wake, next->first);
    if (wake == std::numeric_limits<std::int64_t>::max() && descriptorsIn(mode).empty()) {
        refuse("to wait where no event can ever arrive");
    }
    const std::int64_t left = std::max<std::int64_t>(wake - now(), 0) / 1'000'000 + 1;
    readableWithin(mode, static_cast<int>(std::min<std::int64_t>(left, 60'000)));
}

}  // namespace

namespace kovra {

void removeSourcesOf(CFTypeRef owner) {
    const auto first = std::stable_partition(sources.begin(), sources.end(),
                                             [&](const auto& source) { return source.first->owner != owner; });
    const std::vector<std::pair<CFRunLoopSourceRef, CFRunLoopMode>> removed(first, sources.end());
    sources.erase(first, sources.end());
    for (const auto& [source, mode] : removed) CFRelease(source);
}

void FakeRunLoop::add(Source& source) { others.push_back(&source); }

void FakeRunLoop::remove(Source& source) { std::erase(others, &source); }

CFRunLoopMode FakeRunLoop::alertMode() {
    static const __CFString mode(u"modal panel", FakeObject::Life::endless);
    return &mode;
}

bool FakeRunLoop::fires(CFRunLoopMode addedTo, CFRunLoopMode in) {
    const bool isCommon = in == kCFRunLoopDefaultMode || in == alertMode();
    return addedTo == in || (addedTo == kCFRunLoopCommonModes && isCommon);
}

void FakeRunLoop::settle(CFRunLoopMode mode) {
    while (CFRunLoopRunInMode(mode, 0, true) == kCFRunLoopRunHandledSource) {
    }
}

void FakeRunLoop::let(std::chrono::nanoseconds duration) {
    CFRunLoopRunInMode(kCFRunLoopDefaultMode, std::chrono::duration<double>(duration).count(), false);
}

bool FakeRunLoop::turnUntil(const std::function<bool()>& condition) {
    const auto end = Clock::now() + std::chrono::seconds(20);
    while (!condition() && Clock::now() < end) CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.005, true);
    return condition();
}

void FakeRunLoop::addTimer(std::int64_t time, bool isStrict, std::function<void()> due) {
    timers.emplace(time, Timer{isStrict, std::move(due)});
}

void FakeRunLoop::nap(bool isAsleep) { isNapping = isAsleep; }

void FakeRunLoop::addEvent(std::function<void()> received) { events.push_back(std::move(received)); }

void FakeRunLoop::sendNextEvent() {
    constexpr CFTimeInterval forever = 1e10;
    while (events.empty()) CFRunLoopRunInMode(kCFRunLoopDefaultMode, forever, true);
    const auto received = std::move(events.front());
    events.pop_front();
    received();
}

void FakeRunLoop::endProcess() {
    events.clear();
    isNapping = false;
    while (blockCount() > 0 || !timers.empty()) {
        for (const auto& [due, timer] : std::exchange(timers, {})) push(timer.due);
        runBlocks(kCFRunLoopDefaultMode);
    }
}

}  // namespace kovra

extern "C" {

static const __CFString defaultMode(u"default", FakeObject::Life::endless);
static const __CFString commonModes(u"common", FakeObject::Life::endless);
const CFRunLoopMode kCFRunLoopDefaultMode = &defaultMode;
const CFRunLoopMode kCFRunLoopCommonModes = &commonModes;

CFRunLoopRef CFRunLoopGetMain() { return &theLoop; }

CFRunLoopRunResult CFRunLoopRunInMode(CFRunLoopMode mode, CFTimeInterval seconds, Boolean returnAfterSourceHandled) {
    if (mode == kCFRunLoopCommonModes) refuse("to run in the common modes, which are not a mode of their own");
    constexpr CFTimeInterval forever = 1e9;
    const std::int64_t end =
        seconds < forever ? now() + static_cast<std::int64_t>(seconds * 1e9) : std::numeric_limits<std::int64_t>::max();
    for (;;) {
        bool hasHandled = fireOthers(mode);
        hasHandled |= fireDescriptors(mode);
        hasHandled |= runBlocks(mode);
        if (hasHandled && returnAfterSourceHandled) return kCFRunLoopRunHandledSource;
        if (now() >= end) return kCFRunLoopRunTimedOut;
        if (!hasHandled) waitForEvents(mode, end);
    }
}

void CFRunLoopAddSource(CFRunLoopRef loop, CFRunLoopSourceRef source, CFRunLoopMode mode) {
    if (loop != &theLoop) refuse("a run loop that is not ours");
    fakeObject<__CFRunLoopSource>(source, FakeType::source).retain();
    sources.emplace_back(source, mode);
}

CFFileDescriptorRef CFFileDescriptorCreate(CFAllocatorRef, int number, Boolean closeOnInvalidate,
                                           CFFileDescriptorCallBack callback, const CFFileDescriptorContext* context) {
    if (closeOnInvalidate != 0) refuse("to close a descriptor of another owner");
    if (context->version != 0 || context->retain != nullptr || context->release != nullptr)
        refuse("a context that is not ours");
    return new __CFFileDescriptor(number, callback, context->info);
}

void CFFileDescriptorEnableCallBacks(CFFileDescriptorRef descriptor, CFOptionFlags types) {
    auto& enabled = fakeObject<__CFFileDescriptor>(descriptor, FakeType::descriptor);
    if (enabled.isValid && types == kCFFileDescriptorReadCallBack) enabled.isEnabled = true;
}

void CFFileDescriptorInvalidate(CFFileDescriptorRef descriptor) {
    auto& invalid = fakeObject<__CFFileDescriptor>(descriptor, FakeType::descriptor);
    invalid.isValid = invalid.isEnabled = false;
    kovra::removeSourcesOf(descriptor);
}

CFRunLoopSourceRef CFFileDescriptorCreateRunLoopSource(CFAllocatorRef, CFFileDescriptorRef descriptor, CFIndex) {
    fakeObject<__CFFileDescriptor>(descriptor, FakeType::descriptor);
    return new __CFRunLoopSource(descriptor);
}

struct dispatch_queue_s _dispatch_main_q;

void dispatch_async_f(dispatch_queue_t queue, void* context, dispatch_function_t function) {
    if (queue != &_dispatch_main_q) refuse("a queue that is not ours");
    push([context, function] { function(context); });
}

dispatch_time_t dispatch_time(dispatch_time_t when, std::int64_t nanoseconds) {
    return static_cast<dispatch_time_t>(when == DISPATCH_TIME_NOW ? now() : static_cast<std::int64_t>(when)) +
           static_cast<dispatch_time_t>(nanoseconds);
}
}
