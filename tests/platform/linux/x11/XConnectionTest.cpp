#include "BLE_kovra/platform/linux/x11/XConnection.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/linux/VirtualScreen.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;

struct ConnectionRig {
    std::optional<VirtualScreen> screen{std::in_place};
    SdEventLoop loop;
    int lost = 0;  // how often the loss was reported
    std::unique_ptr<XConnection> connection = XConnection::open(loop, [this] { ++lost; });

    // Sends an event with this number through the server.
    void send(std::uint32_t number) {
        xcb_client_message_event_t event{};
        event.response_type = XCB_CLIENT_MESSAGE;
        event.format = 32;
        event.window = window();
        event.type = XCB_ATOM_INTEGER;
        event.data.data32[0] = number;
        xcb_send_event(connection->get(), 0, event.window, 0, reinterpret_cast<const char*>(&event));
    }
    bool turnUntil(const std::function<bool()>& condition) {
        bool isOver = false;
        const auto task = loop.asyncAfter(20s, [&] { isOver = true; });
        loop.runUntil([&] { return isOver || condition(); });
        task->cancel();
        return condition();
    }
    // Waits until the server has answered all requests so far. XCB has then read the reply and the events before it.
    void waitForReply() {
        const Allocated<xcb_get_input_focus_reply_t> answer{
            xcb_get_input_focus_reply(connection->get(), xcb_get_input_focus(connection->get()), nullptr)};
    }

  private:
    xcb_window_t window() {
        if (window_ == 0) {
            window_ = xcb_generate_id(connection->get());
            xcb_create_window(connection->get(), 0, window_, connection->roots()[0], 0, 0, 1, 1, 0,
                              XCB_WINDOW_CLASS_INPUT_ONLY, 0, 0, nullptr);
        }
        return window_;
    }
    xcb_window_t window_ = 0;
};

struct Recorder {
    std::vector<std::uint32_t> numbers;
    XConnection::Events::Listener listener() {
        return [this](const xcb_generic_event_t& event) {
            ASSERT_EQ(XConnection::kindOf(event), XCB_CLIENT_MESSAGE);
            numbers.push_back(reinterpret_cast<const xcb_client_message_event_t&>(event).data.data32[0]);
        };
    }
};

TEST(XConnectionTest, IsAbsentWithoutADisplay) {
    SdEventLoop loop;
    for (const char* display : {static_cast<const char*>(nullptr), "", ":nonsense", ":65000"}) {
        display == nullptr ? ::unsetenv("DISPLAY") : ::setenv("DISPLAY", display, 1);
        EXPECT_EQ(XConnection::open(loop), nullptr);
    }
    ::unsetenv("DISPLAY");
}

TEST(XConnectionTest, DeliversEventsToItsListenersFromTheQueue) {
    ConnectionRig rig;
    Recorder first;
    Recorder second;
    const auto firstListening = rig.connection->listen(first.listener());
    auto secondListening = rig.connection->listen(second.listener());
    rig.send(1);
    rig.connection->flush();
    EXPECT_TRUE(first.numbers.empty());
    ASSERT_TRUE(rig.turnUntil([&] { return second.numbers.size() == 1; }));
    secondListening.reset();
    rig.send(2);
    rig.connection->flush();
    ASSERT_TRUE(rig.turnUntil([&] { return first.numbers.size() == 2; }));
    EXPECT_EQ(first.numbers, (std::vector<std::uint32_t>{1, 2}));
    EXPECT_EQ(second.numbers, (std::vector<std::uint32_t>{1}));
}

TEST(XConnectionTest, DeliversEventsThatWereReadTogetherWithAReply) {
    ConnectionRig rig;
    Recorder recorder;
    const auto listening = rig.connection->listen(recorder.listener());
    rig.send(1);
    rig.waitForReply();
    rig.connection->flush();
    EXPECT_TRUE(rig.turnUntil([&] { return recorder.numbers.size() == 1; }));
}

TEST(XConnectionTest, AllowsListenersToBeAddedAndRemovedDuringAnEvent) {
    ConnectionRig rig;
    Recorder late;
    XConnection::Events::Token listening;
    XConnection::Events::Token lateListening;
    int calls = 0;
    listening = rig.connection->listen([&](const xcb_generic_event_t&) {
        ++calls;
        lateListening = rig.connection->listen(late.listener());
        listening.reset();
    });
    rig.send(1);
    rig.send(2);
    rig.connection->flush();
    ASSERT_TRUE(rig.turnUntil([&] { return !late.numbers.empty(); }));
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(late.numbers, (std::vector<std::uint32_t>{2}));
}

TEST(XConnectionTest, ContinuesAfterARequestThatTheServerRefuses) {
    ConnectionRig rig;
    Recorder recorder;
    const auto listening = rig.connection->listen(recorder.listener());
    xcb_map_window(rig.connection->get(), 0xFFFFFF);  // no such window
    rig.send(1);
    rig.connection->flush();
    EXPECT_TRUE(rig.turnUntil([&] { return recorder.numbers.size() == 1; }));
}

TEST(XConnectionTest, ReportsALostServerOnceAndThenSleeps) {
    ConnectionRig rig;
    rig.screen->end();
    ASSERT_TRUE(rig.turnUntil([&] { return rig.lost > 0; }));
    rig.send(1);
    rig.waitForReply();
    rig.connection->flush();
    int turns = 0;
    bool isOver = false;
    rig.loop.asyncAfter(50ms, [&] { isOver = true; });
    rig.loop.runUntil([&] { return ++turns > 100 || isOver; });
    EXPECT_TRUE(isOver) << "kept turning";
    EXPECT_EQ(rig.lost, 1);
}

TEST(XConnectionTest, MayBeDestroyedWhileEventsAreQueued) {
    ConnectionRig rig;
    Recorder recorder;
    auto listening = rig.connection->listen(recorder.listener());
    rig.send(1);
    rig.waitForReply();
    rig.connection->flush();
    rig.connection.reset();
    bool done = false;
    rig.loop.async([&] { done = true; });
    rig.loop.runUntil([&] { return done; });
    EXPECT_TRUE(recorder.numbers.empty());
}

}  // namespace
}  // namespace kovra
