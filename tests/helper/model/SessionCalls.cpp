// The calls of the helper to sd-login, and those with which it waits for several descriptors by one.

#include <sys/epoll.h>
#include <systemd/sd-login.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <string>

#include "tests/helper/model/Machine.h"

namespace kovra::helper::model {

namespace {

// The machine's session, or nothing with an error number.
const Machine::Session* sessionOf(const Entry& machine, int& error) {
    error = machine->loginIsBroken || machine->hasNoDescriptors ? -EMFILE : machine->session ? 0 : -ENXIO;
    return error == 0 ? &*machine->session : nullptr;
}

int answer(char** result, const std::string& text) {
    *result = ::strdup(text.c_str());
    return 0;
}

}  // namespace

extern "C" {

int __wrap_sd_login_monitor_new(const char* category, sd_login_monitor** result);
int __wrap_sd_login_monitor_new(const char* category, sd_login_monitor** result) {
    const Entry entry;
    static_cast<void>(category);
    if (entry->hasNoDescriptors) return -EMFILE;
    *result = reinterpret_cast<sd_login_monitor*>(
        new int(entry->newDescriptor({.kind = OpenFile::Kind::login, .path = "login", .members = {}})));
    return 0;
}

sd_login_monitor* __wrap_sd_login_monitor_unref(sd_login_monitor* monitor);
sd_login_monitor* __wrap_sd_login_monitor_unref(sd_login_monitor* monitor) {
    const Entry entry;
    const std::unique_ptr<int> descriptor(reinterpret_cast<int*>(monitor));
    entry->files.erase(*descriptor);
    ::close(*descriptor);
    return nullptr;
}

int __wrap_sd_login_monitor_get_fd(sd_login_monitor* monitor);
int __wrap_sd_login_monitor_get_fd(sd_login_monitor* monitor) { return *reinterpret_cast<int*>(monitor); }

int __wrap_sd_login_monitor_flush(sd_login_monitor* monitor);
int __wrap_sd_login_monitor_flush(sd_login_monitor* monitor) {
    const Entry entry;
    static_cast<void>(monitor);
    entry->hasSessionEvent = false;
    return 0;
}

int __wrap_sd_seat_get_active(const char* seat, char** session, uid_t* user);
int __wrap_sd_seat_get_active(const char* seat, char** session, uid_t* user) {
    const Entry entry;
    static_cast<void>(seat);
    static_cast<void>(user);
    int error = 0;
    return sessionOf(entry, error) == nullptr ? error : answer(session, "c1");
}

int __wrap_sd_session_get_uid(const char* session, uid_t* user);
int __wrap_sd_session_get_uid(const char* session, uid_t* user) {
    const Entry entry;
    static_cast<void>(session);
    int error = 0;
    if (const auto* active = sessionOf(entry, error)) *user = active->user;
    return error;
}

int __wrap_sd_session_is_remote(const char* session);
int __wrap_sd_session_is_remote(const char* session) {
    const Entry entry;
    static_cast<void>(session);
    int error = 0;
    const auto* active = sessionOf(entry, error);
    return active == nullptr ? error : static_cast<int>(active->isRemote);
}

int __wrap_sd_session_get_class(const char* session, char** type);
int __wrap_sd_session_get_class(const char* session, char** type) {
    const Entry entry;
    static_cast<void>(session);
    int error = 0;
    const auto* active = sessionOf(entry, error);
    return active == nullptr ? error : answer(type, active->type);
}

int __wrap_sd_session_get_state(const char* session, char** state);
int __wrap_sd_session_get_state(const char* session, char** state) {
    const Entry entry;
    static_cast<void>(session);
    int error = 0;
    const auto* active = sessionOf(entry, error);
    return active == nullptr ? error : answer(state, active->state);
}

int __wrap_sd_session_get_vt(const char* session, unsigned* terminal);
int __wrap_sd_session_get_vt(const char* session, unsigned* terminal) {
    const Entry entry;
    static_cast<void>(session);
    int error = 0;
    const auto* active = sessionOf(entry, error);
    if (active != nullptr) *terminal = active->terminal;
    return active != nullptr && active->terminal == 0 ? -ENODATA : error;
}

int __real_epoll_create1(int flags);
int __wrap_epoll_create1(int flags);
int __wrap_epoll_create1(int flags) {
    const Entry entry;
    if (!entry.isFromHelper()) return __real_epoll_create1(flags);
    errno = EMFILE;
    if (entry->hasNoDescriptors) return -1;
    return entry->newDescriptor({.kind = OpenFile::Kind::group, .path = "epoll", .members = {}});
}

int __real_epoll_ctl(int group, int operation, int descriptor, epoll_event* event);
int __wrap_epoll_ctl(int group, int operation, int descriptor, epoll_event* event);
int __wrap_epoll_ctl(int group, int operation, int descriptor, epoll_event* event) {
    const Entry entry;
    if (!entry.isFromHelper()) return __real_epoll_ctl(group, operation, descriptor, event);
    entry->files.at(group).members.insert(descriptor);
    return 0;
}

}  // extern "C"

}  // namespace kovra::helper::model
