// The calls of the helper about time, signals, its event loop and the service manager. sd-event is replaced by a loop
// on the machine's clock.

#include <grp.h>
#include <sys/socket.h>
#include <sys/timerfd.h>
#include <systemd/sd-event.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>

#include "tests/helper/model/Machine.h"
#include "tests/helper/model/Source.h"

namespace kovra::helper::model {

namespace {

Time timeOf(const timespec& time) { return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec); }

timespec asTimespec(Time time) {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
    return {seconds.count(), (time - seconds).count()};
}

// The source that is ready and was dispatched least recently, or null.
Source* nextReady(const Entry& machine, const Process& process) {
    Source* next = nullptr;
    for (Source* source : machine->sources) {
        if (source->owner != &process || !source->isEnabled) continue;
        const bool isReady = source->signal != 0      ? process.hasSignal && source->signal == SIGTERM
                             : source->descriptor < 0 ? source->time <= machine->now
                                                      : machine->isReadable(source->descriptor);
        if (isReady && (next == nullptr || source->lastTurn < next->lastTurn)) next = source;
    }
    return next;
}

int add(const Entry& machine, sd_event_source** result, Source made) {
    auto* source = new Source(made);
    source->owner = &machine->process();
    machine->sources.push_back(source);
    *result = reinterpret_cast<sd_event_source*>(source);
    return 0;
}

}  // namespace

extern "C" {

int __real_clock_gettime(clockid_t clock, timespec* time);
int __wrap_clock_gettime(clockid_t clock, timespec* time);
int __wrap_clock_gettime(clockid_t clock, timespec* time) {
    const Entry entry;
    if (!entry.isFromHelper()) return __real_clock_gettime(clock, time);
    *time = asTimespec(entry->now + (clock == CLOCK_REALTIME ? entry->realTimeAtBoot : Time(0)));
    return 0;
}

// std::chrono::steady_clock::now(), whose result is a number of nanoseconds.
long __real__ZNSt6chrono3_V212steady_clock3nowEv();
long __wrap__ZNSt6chrono3_V212steady_clock3nowEv();
long __wrap__ZNSt6chrono3_V212steady_clock3nowEv() {
    const Entry entry;
    return entry.isFromHelper() ? entry->now.count() : __real__ZNSt6chrono3_V212steady_clock3nowEv();
}

int __real_nanosleep(const timespec* time, timespec* left);
int __wrap_nanosleep(const timespec* time, timespec* left);
int __wrap_nanosleep(const timespec* time, timespec* left) {
    const Entry entry;
    if (!entry.isFromHelper()) return __real_nanosleep(time, left);
    entry->process().isServing = false;  // it waits at its end
    entry->waitUntil(entry->now + timeOf(*time), [] { return false; });
    return 0;
}

int __real_sigtimedwait(const sigset_t* signals, siginfo_t* info, const timespec* time);
int __wrap_sigtimedwait(const sigset_t* signals, siginfo_t* info, const timespec* time);
int __wrap_sigtimedwait(const sigset_t* signals, siginfo_t* info, const timespec* time) {
    const Entry entry;
    if (!entry.isFromHelper()) return __real_sigtimedwait(signals, info, time);
    Process& process = entry->process();
    process.isServing = false;  // it waits at its start or its end
    const bool hasCome = entry->waitUntil(entry->now + timeOf(*time), [&] { return process.hasSignal; });
    errno = EAGAIN;
    return hasCome ? SIGTERM : -1;
}

int __real_sigprocmask(int how, const sigset_t* set, sigset_t* before);
int __wrap_sigprocmask(int how, const sigset_t* set, sigset_t* before);
int __wrap_sigprocmask(int how, const sigset_t* set, sigset_t* before) {
    const Entry entry;
    return entry.isFromHelper() ? 0 : __real_sigprocmask(how, set, before);
}

sighandler_t __real_signal(int number, sighandler_t handler);
sighandler_t __wrap_signal(int number, sighandler_t handler);
sighandler_t __wrap_signal(int number, sighandler_t handler) {
    const Entry entry;
    return entry.isFromHelper() ? SIG_DFL : __real_signal(number, handler);
}

int __real_timerfd_create(int clock, int flags);
int __wrap_timerfd_create(int clock, int flags);
int __wrap_timerfd_create(int clock, int flags) {
    const Entry entry;
    if (!entry.isFromHelper()) return __real_timerfd_create(clock, flags);
    errno = EMFILE;
    if (entry->hasNoDescriptors) return -1;
    return entry->newDescriptor({.kind = OpenFile::Kind::clock, .path = "clock", .members = {}});
}

int __real_timerfd_settime(int timer, int flags, const itimerspec* time, itimerspec* before);
int __wrap_timerfd_settime(int timer, int flags, const itimerspec* time, itimerspec* before);
int __wrap_timerfd_settime(int timer, int flags, const itimerspec* time, itimerspec* before) {
    const Entry entry;
    return entry.isFromHelper() ? 0 : __real_timerfd_settime(timer, flags, time, before);
}

int __wrap_sd_event_new(sd_event** event);
int __wrap_sd_event_new(sd_event** event) {
    const Entry entry;
    if (entry->hasNoDescriptors) return -EMFILE;
    *event = reinterpret_cast<sd_event*>(Machine::current);
    return 0;
}

sd_event* __wrap_sd_event_unref(sd_event* event);
sd_event* __wrap_sd_event_unref(sd_event* event) {
    static_cast<void>(event);
    return nullptr;
}

int __wrap_sd_event_add_io(sd_event* event, sd_event_source** result, int descriptor, std::uint32_t events,
                           sd_event_io_handler_t callback, void* context);
int __wrap_sd_event_add_io(sd_event* event, sd_event_source** result, int descriptor, std::uint32_t events,
                           sd_event_io_handler_t callback, void* context) {
    const Entry entry;
    static_cast<void>(event);
    static_cast<void>(events);
    return add(entry, result, {.descriptor = descriptor, .onReadable = callback, .context = context});
}

int __wrap_sd_event_add_time(sd_event* event, sd_event_source** result, clockid_t clock, std::uint64_t time,
                             std::uint64_t accuracy, sd_event_time_handler_t callback, void* context);
int __wrap_sd_event_add_time(sd_event* event, sd_event_source** result, clockid_t clock, std::uint64_t time,
                             std::uint64_t accuracy, sd_event_time_handler_t callback, void* context) {
    const Entry entry;
    static_cast<void>(event);
    static_cast<void>(clock);
    static_cast<void>(accuracy);
    const auto when = std::chrono::microseconds(time);
    return add(entry, result, {.time = when, .onTime = callback, .context = context});
}

int __wrap_sd_event_add_signal(sd_event* event, sd_event_source** result, int number,
                               sd_event_signal_handler_t callback, void* context);
int __wrap_sd_event_add_signal(sd_event* event, sd_event_source** result, int number,
                               sd_event_signal_handler_t callback, void* context) {
    const Entry entry;
    static_cast<void>(event);
    return add(entry, result, {.signal = number, .onSignal = callback, .context = context});
}

sd_event_source* __wrap_sd_event_source_disable_unref(sd_event_source* source);
sd_event_source* __wrap_sd_event_source_disable_unref(sd_event_source* source) {
    const Entry entry;
    auto* ours = reinterpret_cast<Source*>(source);
    entry->sources.remove(ours);
    delete ours;
    return nullptr;
}

int __wrap_sd_event_run(sd_event* event, std::uint64_t timeout);
int __wrap_sd_event_run(sd_event* event, std::uint64_t timeout) {
    const Entry entry;
    static_cast<void>(event);
    static_cast<void>(timeout);
    Process& process = entry->process();
    Source* source = nullptr;
    Time nextTimer = forever;
    for (const Source* each : entry->sources) {
        const bool isTimer = each->owner == &process && each->isEnabled && each->descriptor < 0 && each->signal == 0;
        if (isTimer) nextTimer = std::min(nextTimer, each->time);
    }
    entry->waitUntil(nextTimer, [&] {
        source = nextReady(entry, process);
        process.isServing = process.isServing || source == nullptr;
        return source != nullptr;
    });
    if (source == nullptr) return 0;
    static std::uint64_t turns = 0;
    source->lastTurn = ++turns;
    auto* handle = reinterpret_cast<sd_event_source*>(source);
    if (source->signal != 0) return process.hasSignal = false, source->onSignal(handle, nullptr, source->context), 1;
    if (source->descriptor >= 0) return source->onReadable(handle, source->descriptor, 1, source->context), 1;
    source->isEnabled = false;
    return source->onTime(handle, 0, source->context), 1;
}

char* __real_getenv(const char* name);
char* __wrap_getenv(const char* name);
char* __wrap_getenv(const char* name) {
    const Entry entry;
    if (!entry.isFromHelper() || std::string_view(name) != "NOTIFY_SOCKET") return __real_getenv(name);
    static char address[] = "/run/systemd/notify";
    return entry->process().isServices && entry->process().option.empty() ? address : nullptr;
}

group* __real_getgrnam(const char* name);
group* __wrap_getgrnam(const char* name);
group* __wrap_getgrnam(const char* name) {
    const Entry entry;
    static group ours{};
    return entry.isFromHelper() ? &ours : __real_getgrnam(name);
}

int __real_socket(int domain, int type, int protocol);
int __wrap_socket(int domain, int type, int protocol);
int __wrap_socket(int domain, int type, int protocol) {
    const Entry entry;
    if (!entry.isFromHelper()) return __real_socket(domain, type, protocol);
    errno = EMFILE;
    if (entry->hasNoDescriptors) return -1;
    return entry->newDescriptor({.kind = OpenFile::Kind::socket, .path = "socket", .members = {}});
}

ssize_t __real_sendto(int socket, const void* bytes, std::size_t size, int flags, const sockaddr* address,
                      socklen_t length);
ssize_t __wrap_sendto(int socket, const void* bytes, std::size_t size, int flags, const sockaddr* address,
                      socklen_t length);
ssize_t __wrap_sendto(int socket, const void* bytes, std::size_t size, int flags, const sockaddr* address,
                      socklen_t length) {
    const Entry entry;
    if (!entry.isFromHelper()) return __real_sendto(socket, bytes, size, flags, address, length);
    if (entry->diesHere()) throw Killed();
    errno = entry->notify({static_cast<const char*>(bytes), size});
    return errno == 0 ? static_cast<ssize_t>(size) : -1;
}

}  // extern "C"

}  // namespace kovra::helper::model
