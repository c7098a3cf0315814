#include "BLE_kovra/platform/linux/session/LogindSession.h"

#include <systemd/sd-login.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <utility>

namespace kovra {

namespace {

constexpr const char* login = "org.freedesktop.login1";
constexpr const char* manager = "/org/freedesktop/login1";
constexpr const char* managerInterface = "org.freedesktop.login1.Manager";

std::string taken(int result, char* text) {
    const Allocated<char> owned(text);
    return result >= 0 && owned ? owned.get() : "";
}

}  // namespace

std::string LogindSession::currentSession() {
    char* text = nullptr;
    int result = sd_pid_get_session(0, &text);
    std::string session = taken(result, text);
    // A program that was started by the user's service manager belongs to no session.
    if (const char* named = std::getenv("XDG_SESSION_ID"); session.empty() && named != nullptr) session = named;
    if (!session.empty()) return session;
    text = nullptr;
    result = sd_uid_get_display(::getuid(), &text);
    return taken(result, text);
}

bool LogindSession::exists(const std::string& session) {
    uid_t user{};
    return sd_session_get_uid(session.c_str(), &user) >= 0;
}

LogindSession::LogindSession(SystemBus& bus, std::string session, Events events,
                             std::function<bool(const std::string&)> isThere)
    : session_(std::move(session)), events_(std::move(events)), isThere_(std::move(isThere)) {
    if (BusConnection* connection = bus.connection()) subscribe(*connection);
    listening_ = bus.listen([this](BusConnection* connection) { busChanged(connection); });
}

void LogindSession::busChanged(BusConnection* bus) {
    if (bus == nullptr) {
        received_.clear();
        wasThere_ = wasThere_ || isThere_(session_);
        return;
    }
    if (!received_.empty()) return;  // subscribed when the connection began
    subscribe(*bus);
    const bool hasEnded = wasThere_ && !isThere_(session_);
    (hasEnded ? events_.removed : events_.resumed)();
}

void LogindSession::subscribe(BusConnection& bus) {
    received_.push_back(bus.receive({login, manager, managerInterface, "PrepareForSleep"}, [this](auto* message) {
        int isGoingToSleep = 1;
        if (sd_bus_message_read(message, "b", &isGoingToSleep) > 0 && isGoingToSleep == 0) events_.resumed();
    }));
    char* encoded = nullptr;
    if (session_.empty() || sd_bus_path_encode("/org/freedesktop/login1/session", session_.c_str(), &encoded) < 0)
        return;
    const Allocated<char> path(encoded);
    subscribeToSession(bus, path.get());
}

void LogindSession::subscribeToSession(BusConnection& bus, const std::string& path) {
    constexpr const char* properties = "org.freedesktop.DBus.Properties";
    received_.push_back(bus.receive(
        {login, path, properties, "PropertiesChanged", "org.freedesktop.login1.Session"}, [this](auto* message) {
            if (sd_bus_message_skip(message, "s") >= 0 && readBoolean(message, "Active") == true) events_.activated();
        }));
    received_.push_back(bus.receive({login, manager, managerInterface, "SessionRemoved"}, [this](auto* message) {
        const char* removed = nullptr;
        // The login manager removes a session's file before it sends the signal.
        if (sd_bus_message_read(message, "s", &removed) > 0 && session_ == removed && !isThere_(session_))
            events_.removed();
    }));
}

}  // namespace kovra
