#pragma once

#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "BLE_kovra/platform/linux/bus/BusConnection.h"

namespace kovra {

// A substitute for a desktop's portal for global shortcuts, on a bus that has no real one. It has the portal's
// published interface and refuses malformed calls. It can also refuse valid ones, send invalid responses, ask the user,
// and exit.
class StandInPortal {
  public:
    explicit StandInPortal(SdEventLoop& loop) : loop_(loop) { start(); }

    static constexpr const char* busName = "org.freedesktop.portal.Desktop";

    bool isRunning() const { return bus_ != nullptr; }
    void start() {
        sd_bus* opened = nullptr;
        ASSERT_GE(sd_bus_open_user(&opened), 0);
        bus_.reset(opened);
        ASSERT_GE(sd_bus_add_filter(opened, nullptr, called, this), 0);
        ASSERT_GE(sd_bus_attach_event(opened, loop_.event(), SD_EVENT_PRIORITY_NORMAL), 0);
        ASSERT_GE(sd_bus_request_name(opened, busName, 0), 0);
    }
    void stop() {
        bus_.reset();
        session = "";
        bound.clear();
        dialogs.clear();
    }

    // Presses and releases Control, Option and T. Returns whether a shortcut is bound, so that the focused window does
    // not receive the keys.
    bool press() {
        if (bound.empty()) return false;
        activate();
        deactivate();
        return true;
    }
    void activate() { emitOfShortcut("Activated", session, bound.empty() ? "" : bound[0]); }
    void deactivate() { emitOfShortcut("Deactivated", session, bound.empty() ? "" : bound[0]); }
    void emitOfShortcut(const char* signal, const std::string& ofSession, const std::string& id) {
        EXPECT_GE(sd_bus_emit_signal(bus_.get(), desktopPath, shortcutsInterface, signal, "osta{sv}", ofSession.c_str(),
                                     id.c_str(), std::uint64_t{1}, 0),
                  0);
    }
    void closeSession() {
        EXPECT_GE(sd_bus_emit_signal(bus_.get(), session.c_str(), "org.freedesktop.portal.Session", "Closed", ""), 0);
        session = "";
        bound.clear();
    }
    // The user assigns another combination, or none if the text is empty.
    void assign(const std::string& combination, const std::string& ofSession) {
        trigger = combination;
        EXPECT_GE(sd_bus_emit_signal(bus_.get(), desktopPath, shortcutsInterface, "ShortcutsChanged", "oa(sa{sv})",
                                     ofSession.c_str(), 2, "other", 0, "TEST-1", 1, "trigger_description", "s",
                                     trigger.c_str()),
                  0);
    }
    // The user answers the dialog that was opened first.
    void answer() {
        ASSERT_FALSE(dialogs.empty());
        bindAsked();
        respond("BindShortcuts", dialogs.front());
        dialogs.erase(dialogs.begin());
    }
    void emit(const char* interface, const char* signal) {
        EXPECT_GE(sd_bus_emit_signal(bus_.get(), desktopPath, interface, signal, "u", 7U), 0);
    }

    // The calls in order, each with its arguments.
    std::vector<std::string> calls;
    std::string session;
    std::vector<std::string> bound;
    std::vector<std::string> dialogs;  // the requests that the user has not answered yet

    // The behavior of the portal:
    std::vector<std::string> remembered;          // shortcuts of this program that the user accepted earlier
    bool knowsRegistry = true;                    // whether it has the interface Registry, as later versions do
    bool answersBeforeItReplies = false;          // the response to a request precedes the reply to its call
    std::string trigger = "Ctrl+Alt+T";           // what it calls the assigned combination
    bool isTakenByAnother = false;                // accepts the shortcut, and assigns no key to it
    bool asksTheUser = false;                     // opens a dialog before it responds to BindShortcuts
    bool bindsNewSessions = false;                // as Plasma 5.27: gives keys only to the shortcuts of CreateSession
    bool failsWhenItGrants = false;               // as GNOME 48: responds to BindShortcuts with the code 2
    std::map<std::string, std::uint32_t> codes;   // the response code of a method, if not 0
    std::map<std::string, std::string> errors;    // the error of a method, if it has one
    std::map<std::string, std::string> nonsense;  // the defect in the response to a method

  private:
    static constexpr const char* desktopPath = "/org/freedesktop/portal/desktop";
    static constexpr const char* shortcutsInterface = "org.freedesktop.portal.GlobalShortcuts";

    static int called(sd_bus_message* message, void* context, sd_bus_error*) {
        std::uint8_t type = 0;
        sd_bus_message_get_type(message, &type);
        const char* member = sd_bus_message_get_member(message);
        if (type != SD_BUS_MESSAGE_METHOD_CALL || member == nullptr) return 0;
        if (std::string_view(member) == "Ping") return 0;  // sd-bus answers it
        static_cast<StandInPortal*>(context)->handle(message, member);
        return 1;
    }

    void handle(sd_bus_message* message, const std::string& method) {
        const std::map<std::string, std::pair<std::string, std::string>> published{
            {"Register", {"org.freedesktop.host.portal.Registry", "sa{sv}"}},
            {"CreateSession", {shortcutsInterface, "a{sv}"}},
            {"ListShortcuts", {shortcutsInterface, "oa{sv}"}},
            {"BindShortcuts", {shortcutsInterface, "oa(sa{sv})sa{sv}"}},
            {"Close", {"org.freedesktop.portal.Session", ""}}};
        const auto found = published.find(method);
        const std::string path = sd_bus_message_get_path(message);
        if (found == published.end() || found->second.first != sd_bus_message_get_interface(message) ||
            path != (method == "Close" ? session : desktopPath) || (method == "Register" && !knowsRegistry)) {
            calls.push_back(method == "Register" ? "Register?" : "unknown " + method + " " + path);
            sd_bus_reply_method_errorf(message, "org.freedesktop.DBus.Error.UnknownMethod", "no such method");
            return;
        }
        if (found->second.second != sd_bus_message_get_signature(message, 1)) {
            calls.push_back("wrong arguments " + method);
            sd_bus_reply_method_errorf(message, "org.freedesktop.DBus.Error.InvalidArgs", "wrong arguments");
            return;
        }
        if (method == "Register") return registered(message);
        if (method == "Close") return sessionClosed(message);
        request(message, method);
    }

    void registered(sd_bus_message* message) {
        const char* application = nullptr;
        sd_bus_message_read(message, "s", &application);
        calls.push_back(std::string("Register ") + application);
        sd_bus_reply_method_return(message, "");
    }
    void sessionClosed(sd_bus_message* message) {
        calls.emplace_back("Close");
        session = "";
        bound.clear();
        sd_bus_reply_method_return(message, "");
    }

    void request(sd_bus_message* message, const std::string& method) {
        std::string asked;
        if (method != "CreateSession") {
            const char* ofSession = nullptr;
            sd_bus_message_read(message, "o", &ofSession);
            if (ofSession != session) asked = " of another session";
        }
        if (method == "BindShortcuts") asked += readShortcuts(message) + readWindow(message);
        const auto options = readOptions(message);
        if (options.contains("shortcuts")) asked += options.at("shortcuts");
        calls.push_back(method + asked);
        if (const auto error = errors.find(method); error != errors.end()) {
            sd_bus_reply_method_errorf(message, error->second.c_str(), "refused");
            return;
        }
        std::string sender = sd_bus_message_get_sender(message) + 1;
        std::replace(sender.begin(), sender.end(), '.', '_');
        const std::string path = std::string(desktopPath) + "/request/" + sender + "/" + options.at("handle_token");
        const bool isGranted = !codes.contains(method);
        if (method == "BindShortcuts" && std::exchange(boundSession_, session) == session) {
            calls.emplace_back("a second request of one session");
            sd_bus_reply_method_errorf(message, "org.freedesktop.portal.Error.Failed", "only one request");
            return;
        }
        if (method == "CreateSession" && isGranted && bindsNewSessions && !isTakenByAnother) bound = {lastAsked_};
        if (method == "CreateSession" && isGranted)
            session = std::string(desktopPath) + "/session/" + sender + "/" + options.at("session_handle_token");
        if (method == "ListShortcuts" && isGranted && !isTakenByAnother && !bindsNewSessions) bound = remembered;

        if (!answersBeforeItReplies) sd_bus_reply_method_return(message, "o", path.c_str());
        if (method == "BindShortcuts" && asksTheUser) return dialogs.push_back(path);
        if (method == "BindShortcuts") bindAsked();
        respond(method, path);
        if (answersBeforeItReplies) sd_bus_reply_method_return(message, "o", path.c_str());
    }

    void bindAsked() {
        if (!codes.contains("BindShortcuts") && !isTakenByAnother && !bindsNewSessions) bound = {lastAsked_};
    }

    std::string readShortcuts(sd_bus_message* message) {
        std::string text;
        sd_bus_message_enter_container(message, 'a', "(sa{sv})");
        while (sd_bus_message_enter_container(message, 'r', "sa{sv}") > 0) {
            const char* id = nullptr;
            sd_bus_message_read(message, "s", &id);
            lastAsked_ = id;
            text += " " + lastAsked_;
            for (const auto& [name, value] : readOptions(message)) text += " " + name + "=" + value;
            sd_bus_message_exit_container(message);
        }
        sd_bus_message_exit_container(message);
        return text;
    }
    static std::string readWindow(sd_bus_message* message) {
        const char* window = nullptr;
        sd_bus_message_read(message, "s", &window);
        return *window == '\0' ? "" : " for a window";
    }
    std::map<std::string, std::string> readOptions(sd_bus_message* message) {
        std::map<std::string, std::string> options;
        sd_bus_message_enter_container(message, 'a', "{sv}");
        while (sd_bus_message_enter_container(message, 'e', "sv") > 0) {
            const char* name = nullptr;
            const char* value = nullptr;
            EXPECT_GE(sd_bus_message_read(message, "s", &name), 0);
            if (std::string_view(name) == "shortcuts") {
                EXPECT_GE(sd_bus_message_enter_container(message, 'v', "a(sa{sv})"), 0);
                options[name] = readShortcuts(message);
                sd_bus_message_exit_container(message);
            } else {
                EXPECT_GE(sd_bus_message_read(message, "v", "s", &value), 0) << name;
                options[name] = value == nullptr ? "" : value;
            }
            sd_bus_message_exit_container(message);
        }
        sd_bus_message_exit_container(message);
        return options;
    }

    void respond(const std::string& method, const std::string& path) {
        const char* request = "org.freedesktop.portal.Request";
        const auto send = [&](const char* types, auto... values) {
            EXPECT_GE(sd_bus_emit_signal(bus_.get(), path.c_str(), request, "Response", types, values...), 0);
        };
        const bool isFailing = failsWhenItGrants && method == "BindShortcuts";
        const std::uint32_t code = codes.contains(method) ? codes[method] : isFailing ? 2 : 0;
        const std::string wrong = nonsense.contains(method) ? nonsense[method] : "";
        if (wrong == "types") return send("s", "0");
        if (wrong == "nothing") return send("");
        if (wrong == "no results") return send("ua{sv}", code, 0);
        if (method == "CreateSession") {
            if (wrong == "number") return send("ua{sv}", code, 1, "session_handle", "u", 7U);
            if (wrong == "no path") return send("ua{sv}", code, 1, "session_handle", "s", "no path at all");
            if (wrong == "more") {
                return send("ua{sv}", code, 3, "later", "as", 1, "thing", "session_handle", "s", session.c_str(),
                            "more", "u", 7U);
            }
            return send("ua{sv}", code, 1, "session_handle", "s", session.c_str());
        }
        if (wrong == "number") return send("ua{sv}", code, 1, "shortcuts", "u", 7U);
        if (wrong == "strings") return send("ua{sv}", code, 1, "shortcuts", "as", 1, "TEST-1");
        const char* types = "a(sa{sv})";
        if (bound.empty()) return send("ua{sv}", code, 1, "shortcuts", types, 0);
        send("ua{sv}", code, 2, "later", "as", 1, "thing", "shortcuts", types, 2, "other", 0, bound[0].c_str(), 1,
             "trigger_description", "s", trigger.c_str());
    }

    SdEventLoop& loop_;
    BusHandle bus_;
    std::string lastAsked_;
    std::string boundSession_;
};

}  // namespace kovra
