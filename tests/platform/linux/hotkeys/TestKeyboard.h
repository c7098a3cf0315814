#pragma once

#include <gtest/gtest.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "BLE_kovra/platform/linux/loop/Handles.h"

namespace kovra {

// Key codes of the X server, which identify positions on the keyboard.
namespace key {
constexpr xcb_keycode_t t = 28;
constexpr xcb_keycode_t a = 38;
constexpr xcb_keycode_t control = 37;
constexpr xcb_keycode_t shift = 50;
constexpr xcb_keycode_t alt = 64;
constexpr xcb_keycode_t rightAlt = 108;
constexpr xcb_keycode_t super = 133;
constexpr xcb_keycode_t capsLock = 66;
constexpr xcb_keycode_t numLock = 77;
constexpr xcb_keycode_t scrollLock = 78;
constexpr xcb_keycode_t menu = 135;
}  // namespace key

using Keys = std::vector<xcb_keycode_t>;

// A keyboard whose keys the X server processes like real ones, and the focused window.
class TestKeyboard {
  public:
    TestKeyboard() : connection_(xcb_connect(nullptr, nullptr)) {
        xcb_connection_t* x = connection_.get();
        root_ = xcb_setup_roots_iterator(xcb_get_setup(x)).data->root;
        window_ = xcb_generate_id(x);
        const std::uint32_t events = XCB_EVENT_MASK_KEY_PRESS;
        xcb_create_window(x, 0, window_, root_, 0, 0, 10, 10, 0, XCB_WINDOW_CLASS_INPUT_ONLY, 0, XCB_CW_EVENT_MASK,
                          &events);
        xcb_map_window(x, window_);
        xcb_set_input_focus(x, XCB_INPUT_FOCUS_NONE, window_, XCB_CURRENT_TIME);
        waitForServer();
    }

    void down(xcb_keycode_t key) { fake(XCB_KEY_PRESS, key); }
    void up(xcb_keycode_t key) { fake(XCB_KEY_RELEASE, key); }
    void tap(xcb_keycode_t key) {
        down(key);
        up(key);
    }
    void chord(const Keys& keys) {
        for (const xcb_keycode_t each : keys) down(each);
        for (const xcb_keycode_t each : Keys(keys.rbegin(), keys.rend())) up(each);
    }

    // Returns the modifier state of each press of T that the window received since the last call.
    std::vector<std::uint16_t> pressesInTheWindow() {
        waitForServer();
        std::vector<std::uint16_t> states;
        while (const Allocated<xcb_generic_event_t> event{xcb_poll_for_event(connection_.get())}) {
            if (event->response_type != XCB_KEY_PRESS) continue;
            const auto& press = reinterpret_cast<const xcb_key_press_event_t&>(*event);
            if (press.detail == key::t) states.push_back(press.state);
        }
        return states;
    }

    // Sets the keyboard map as a desktop's settings do, for instance with -layout us,ru.
    static void setMap(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "setxkbmap");
        std::vector<char*> words;
        for (std::string& each : arguments) words.push_back(each.data());
        words.push_back(nullptr);
        pid_t pid = 0;
        ASSERT_EQ(::posix_spawnp(&pid, "setxkbmap", nullptr, nullptr, words.data(), environ), 0);
        int status = -1;
        ::waitpid(pid, &status, 0);
        ASSERT_EQ(status, 0);
    }
    xcb_keysym_t symbolOfT() {
        const Allocated<xcb_get_keyboard_mapping_reply_t> reply{xcb_get_keyboard_mapping_reply(
            connection_.get(), xcb_get_keyboard_mapping(connection_.get(), key::t, 1), nullptr)};
        return reply ? xcb_get_keyboard_mapping_keysyms(reply.get())[0] : 0;
    }
    // Assigns these keys to the modifiers 1 to 5; Shift, Lock and Control keep theirs.
    void setModifiers(const std::array<xcb_keycode_t, 5>& keys) {
        std::array<xcb_keycode_t, 8> all{key::shift, key::capsLock, key::control};
        std::copy(keys.begin(), keys.end(), all.begin() + 3);
        const Allocated<xcb_set_modifier_mapping_reply_t> reply{xcb_set_modifier_mapping_reply(
            connection_.get(), xcb_set_modifier_mapping(connection_.get(), 1, all.data()), nullptr)};
        ASSERT_TRUE(reply);
        ASSERT_EQ(reply->status, XCB_MAPPING_STATUS_SUCCESS);
    }

    // Grabs T with these modifiers, as another program would.
    void grabT(std::uint16_t modifiers) {
        xcb_grab_key(connection_.get(), 0, root_, modifiers, key::t, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
        waitForServer();
    }
    void ungrabT() {
        xcb_ungrab_key(connection_.get(), key::t, root_, XCB_MOD_MASK_ANY);
        waitForServer();
    }

    // Announces a new window manager, as the convention for selections of managers says.
    void announceManager() {
        constexpr std::string_view name = "MANAGER";
        const Allocated<xcb_intern_atom_reply_t> atom{xcb_intern_atom_reply(
            connection_.get(), xcb_intern_atom(connection_.get(), 0, name.size(), name.data()), nullptr)};
        ASSERT_TRUE(atom);
        xcb_client_message_event_t event{};
        event.response_type = XCB_CLIENT_MESSAGE;
        event.format = 32;
        event.window = root_;
        event.type = atom->atom;
        xcb_send_event(connection_.get(), 0, root_, XCB_EVENT_MASK_STRUCTURE_NOTIFY,
                       reinterpret_cast<const char*>(&event));
        waitForServer();
    }

    // Takes the part of a window manager, by the convention for selections of managers, until endManager() is called.
    void startManager() {
        const Allocated<xcb_intern_atom_reply_t> atom{
            xcb_intern_atom_reply(connection_.get(), xcb_intern_atom(connection_.get(), 0, 5, "WM_S0"), nullptr)};
        ASSERT_TRUE(atom);
        manager_ = xcb_generate_id(connection_.get());
        xcb_create_window(connection_.get(), 0, manager_, root_, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY, 0, 0,
                          nullptr);
        xcb_set_selection_owner(connection_.get(), manager_, atom->atom, XCB_CURRENT_TIME);
        waitForServer();
    }
    void endManager() {
        xcb_destroy_window(connection_.get(), manager_);
        waitForServer();
    }

    // Waits until the server has processed all requests so far and has sent the resulting events.
    void waitForServer() {
        const Allocated<xcb_get_input_focus_reply_t> reply{
            xcb_get_input_focus_reply(connection_.get(), xcb_get_input_focus(connection_.get()), nullptr)};
        ASSERT_TRUE(reply);
        ASSERT_EQ(reply->focus, window_);
    }

  private:
    void fake(std::uint8_t type, xcb_keycode_t key) {
        xcb_test_fake_input(connection_.get(), type, key, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
        waitForServer();
    }

    Handle<xcb_connection_t, xcb_disconnect> connection_;
    xcb_window_t root_ = 0;
    xcb_window_t window_ = 0;
    xcb_window_t manager_ = 0;
};

}  // namespace kovra
