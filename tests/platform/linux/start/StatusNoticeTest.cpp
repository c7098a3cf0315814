#include "BLE_kovra/platform/linux/start/StatusNotice.h"

#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "BLE_kovra/platform/linux/tray/StatusNotifierWatcher.h"
#include "BLE_kovra/platform/linux/windows/WindowProcess.h"
#include "tests/platform/linux/bus/BusText.h"
#include "tests/platform/linux/loop/Turns.h"
#include "tests/platform/linux/tray/Panel.h"
#include "tests/support/linux/PrivateBus.h"

namespace kovra {
namespace {

using Texts = std::vector<std::string>;

// The desktop's notification service, with its own connection to the bus.
class NotificationService {
  public:
    explicit NotificationService(SdEventLoop& loop) {
        sd_bus* bus = nullptr;
        EXPECT_GE(sd_bus_open_user(&bus), 0);
        bus_.reset(bus);
        EXPECT_GE(sd_bus_attach_event(bus, loop.event(), SD_EVENT_PRIORITY_NORMAL), 0);
        EXPECT_GE(sd_bus_add_object_vtable(bus, nullptr, "/org/freedesktop/Notifications", name, table.data(), this),
                  0);
        EXPECT_GE(sd_bus_request_name(bus, name, 0), 0);
    }

    Texts calls;
    bool refuses = false;
    bool isSilent = false;
    std::uint32_t number = 40;  // of the last notification
    std::vector<BusMessage> unanswered;

    void answerAll() {
        for (const BusMessage& call : unanswered) sd_bus_reply_method_return(call.get(), "u", ++number);
        unanswered.clear();
    }

    // Releases the name, as a service does that another one replaces.
    void leave() { EXPECT_GE(sd_bus_release_name(bus_.get(), name), 0); }

  private:
    static constexpr const char* name = "org.freedesktop.Notifications";

    static int notify(sd_bus_message* call, void* context, sd_bus_error* error) {
        auto& self = *static_cast<NotificationService*>(context);
        self.calls.push_back(textOf(call));
        if (self.refuses) return sd_bus_error_set(error, SD_BUS_ERROR_LIMITS_EXCEEDED, "Too many.");
        self.unanswered.emplace_back(sd_bus_message_ref(call));
        if (!self.isSilent) self.answerAll();
        return 1;
    }
    static constexpr std::array<sd_bus_vtable, 3> table{{
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD("Notify", "susssasa{sv}i", "u", notify, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END,
    }};

    BusHandle bus_;
};

std::string notification(int replaced, const std::string& text) {
    return "\"BLE-kovra\" " + std::to_string(replaced) + " \"ble-kovra\" \"" + text +
           "\" \"\" [] [\"desktop-entry\":\"org.ble_kovra.BLEKovra\" \"transient\":yes] -1";
}

class StatusNoticeTest : public testing::Test {
  protected:
    Texts received(std::size_t count) {
        turnUntil(loop, [&] { return service.calls.size() >= count; });
        return service.calls;
    }
    // Lets the program handle the reply to its last call.
    void settle() {
        turnUntil(loop, [] { return false; }, std::chrono::milliseconds(100));
    }

    PrivateBus daemon{"DBUS_SESSION_BUS_ADDRESS"};
    SdEventLoop loop;
    SessionBus bus{loop};
    StatusNotifierWatcher watcher{bus};
    WindowProcess window{loop, [] { return std::string(); }};
    StatusNotice notice{bus, TrayPresence(watcher, window)};
    NotificationService service{loop};
};

TEST_F(StatusNoticeTest, IsATransientNotification) {
    notice.show("Trackpad muted");
    EXPECT_EQ(received(1), Texts{notification(0, "Trackpad muted")});
}

TEST_F(StatusNoticeTest, ReplacesTheOneBefore) {
    notice.show("one");
    received(1);
    settle();
    notice.show("two");
    received(2);
    settle();
    notice.show("three");
    EXPECT_EQ(received(3), (Texts{notification(0, "one"), notification(41, "two"), notification(42, "three")}));
}

TEST_F(StatusNoticeTest, SendsOnlyTheNewestTextToASlowService) {
    service.isSilent = true;
    for (const char* text : {"one", "two", "three"}) notice.show(text);
    received(1);
    settle();
    EXPECT_EQ(service.calls, Texts{notification(0, "one")});
    service.answerAll();
    EXPECT_EQ(received(2), (Texts{notification(0, "one"), notification(41, "three")}));
}

TEST_F(StatusNoticeTest, IsNewAfterTheServiceHasRefusedOne) {
    notice.show("one");
    received(1);
    settle();
    service.refuses = true;
    notice.show("two");
    received(2);
    settle();
    service.refuses = false;
    notice.show("three");
    EXPECT_EQ(received(3).back(), notification(0, "three"));
}

TEST_F(StatusNoticeTest, IsShownAgainAfterTheBusWasAway) {
    service.isSilent = true;
    notice.show("one");
    received(1);
    service.unanswered.clear();
    daemon.restart();
    turnUntil(loop, [&] { return bus.connection() == nullptr; });
    notice.show("lost");
    EXPECT_TRUE(turnUntil(loop, [&] { return bus.connection() != nullptr; }));
    NotificationService restarted(loop);
    notice.show("two");
    turnUntil(loop, [&] { return !restarted.calls.empty(); });
    EXPECT_EQ(restarted.calls, Texts{notification(0, "two")});
}

TEST_F(StatusNoticeTest, ReplacesNothingOnAnotherBus) {
    notice.show("one");
    received(1);
    settle();
    daemon.restart();
    turnUntil(loop, [&] { return bus.connection() == nullptr; });
    EXPECT_TRUE(turnUntil(loop, [&] { return bus.connection() != nullptr; }));
    NotificationService restarted(loop);
    notice.show("two");
    turnUntil(loop, [&] { return !restarted.calls.empty(); });
    EXPECT_EQ(restarted.calls, Texts{notification(0, "two")});
}

TEST_F(StatusNoticeTest, ReplacesNothingThatAnotherServiceHasShown) {
    notice.show("one");
    received(1);
    settle();
    service.leave();
    NotificationService next(loop);
    settle();
    notice.show("two");
    turnUntil(loop, [&] { return !next.calls.empty(); });
    EXPECT_EQ(next.calls, Texts{notification(0, "two")});
}

TEST_F(StatusNoticeTest, IsNotShownWhereATrayHasTheIcon) {
    Panel panel(loop);
    ASSERT_TRUE(turnUntil(loop, [&] { return bus.connection() != nullptr; }));
    watcher.setItem("/StatusNotifierItem");
    ASSERT_TRUE(turnUntil(loop, [&] { return watcher.icon() == StatusNotifierWatcher::Icon::shown; }));
    notice.show("one");
    settle();
    EXPECT_EQ(service.calls, Texts{});
}

}  // namespace
}  // namespace kovra
