#pragma once

#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "BLE_kovra/platform/linux/bus/BusMessage.h"
#include "BLE_kovra/platform/linux/loop/SdEventLoop.h"

namespace kovra {

// The values of the setting color-scheme.
struct Scheme {
    static constexpr std::uint32_t none = 0;
    static constexpr std::uint32_t dark = 1;
    static constexpr std::uint32_t light = 2;
};

// A substitute for the settings of a desktop's portal, on a bus that has no real one. It has the portal's published
// interface. It can also lack the setting, answer with another type, and exit.
class StandInSettings {
  public:
    static constexpr const char* busName = "org.freedesktop.portal.Desktop";

    explicit StandInSettings(SdEventLoop& loop, std::uint32_t scheme = 0) : scheme(scheme), loop_(loop) { start(); }

    void start() {
        sd_bus* opened = nullptr;
        ASSERT_GE(sd_bus_open_user(&opened), 0);
        bus_.reset(opened);
        ASSERT_GE(sd_bus_add_filter(opened, nullptr, called, this), 0);
        ASSERT_GE(sd_bus_attach_event(opened, loop_.event(), SD_EVENT_PRIORITY_NORMAL), 0);
        ASSERT_GE(sd_bus_request_name(opened, busName, 0), 0);
    }
    void stop() { bus_.reset(); }

    // Changes the scheme, and reports it.
    void change(std::uint32_t to) {
        scheme = to;
        report("org.freedesktop.appearance", "color-scheme", "u", to);
    }
    template <typename Value>
    void report(const char* group, const char* key, const char* type, Value value) {
        EXPECT_GE(sd_bus_emit_signal(bus_.get(), path, settings, "SettingChanged", "ssv", group, key, type, value), 0);
    }

    std::uint32_t scheme;
    bool hasScheme = true;
    bool answersWithText = false;
    int reads = 0;

  private:
    static constexpr const char* path = "/org/freedesktop/portal/desktop";
    static constexpr const char* settings = "org.freedesktop.portal.Settings";

    static int called(sd_bus_message* message, void* context, sd_bus_error*) {
        const char* member = sd_bus_message_get_member(message);
        if (sd_bus_message_is_method_call(message, nullptr, nullptr) <= 0 || std::string_view(member) == "Ping")
            return 0;
        static_cast<StandInSettings*>(context)->answer(message);
        return 1;
    }
    void answer(sd_bus_message* message) {
        const char* group = nullptr;
        const char* key = nullptr;
        const bool isRead = sd_bus_message_is_method_call(message, settings, "Read") > 0 &&
                            path == std::string_view(sd_bus_message_get_path(message)) &&
                            sd_bus_message_read(message, "ss", &group, &key) > 0;
        EXPECT_TRUE(isRead) << sd_bus_message_get_member(message);
        ++reads;
        const bool isScheme = isRead && std::string_view(group) == "org.freedesktop.appearance" &&
                              std::string_view(key) == "color-scheme";
        if (!isScheme || !hasScheme)
            sd_bus_reply_method_errorf(message, "org.freedesktop.portal.Error.NotFound", "Requested setting not found");
        else if (answersWithText)
            sd_bus_reply_method_return(message, "v", "v", "s", "dark");
        else
            sd_bus_reply_method_return(message, "v", "v", "u", scheme);
    }

    SdEventLoop& loop_;
    BusHandle bus_;
};

}  // namespace kovra
