#pragma once

#include <gtest/gtest.h>
#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <QApplication>
#include <QMouseEvent>
#include <QPoint>
#include <QTest>
#include <cstdint>
#include <cstdlib>

namespace kovra {

// Mouse and keyboard input through the X server, like that of real devices.
class RealInput : public QObject {
  public:
    RealInput() : server_(xcb_connect(nullptr, nullptr)) { QCoreApplication::instance()->installEventFilter(this); }
    ~RealInput() override { xcb_disconnect(server_); }

    void moveTo(const QPoint& onScreen) {
        at_ = onScreen;
        fake(XCB_MOTION_NOTIFY, 0, at_);
    }
    void press() { fake(XCB_BUTTON_PRESS, 1); }
    void release() { fake(XCB_BUTTON_RELEASE, 1); }
    void turnWheel(bool isDown) {
        const std::uint8_t button = isDown ? 5 : 4;
        fake(XCB_BUTTON_PRESS, button);
        fake(XCB_BUTTON_RELEASE, button);
    }
    // Presses the key with this code. If `held` is not 0, that key is held down meanwhile.
    void key(xcb_keycode_t code, xcb_keycode_t held = 0) {
        if (held != 0) fake(XCB_KEY_PRESS, held);
        fake(XCB_KEY_PRESS, code);
        fake(XCB_KEY_RELEASE, code);
        if (held != 0) fake(XCB_KEY_RELEASE, held);
    }

    // Waits until the toolkit has processed all input: moves the pointer by a pixel and waits for that event.
    void settle() {
        isAside_ = !isAside_;
        const QPoint aside = at_ + QPoint(isAside_ ? 1 : 0, 0);
        fake(XCB_MOTION_NOTIFY, 0, aside);
        EXPECT_TRUE(QTest::qWaitFor([&] { return seen_ == aside; })) << "the pointer did not move";
    }

  private:
    void fake(std::uint8_t type, std::uint8_t detail, QPoint to = {}) {
        xcb_test_fake_input(server_, type, detail, XCB_CURRENT_TIME, XCB_NONE, static_cast<std::int16_t>(to.x()),
                            static_cast<std::int16_t>(to.y()), 0);
        // The server replies after it has processed the previous requests.
        std::free(xcb_get_input_focus_reply(server_, xcb_get_input_focus(server_), nullptr));
    }
    bool eventFilter(QObject* object, QEvent* event) override {
        if (event->type() == QEvent::MouseMove) seen_ = static_cast<QMouseEvent*>(event)->globalPosition().toPoint();
        return QObject::eventFilter(object, event);
    }

    xcb_connection_t* server_;
    QPoint at_;
    QPoint seen_;
    bool isAside_ = false;
};

}  // namespace kovra
