#include "BLE_kovra/platform/linux/ui/windows/BringToFront.h"

#include <xcb/xcb.h>

#include <QEvent>
#include <QGuiApplication>
#include <QWidget>
#include <QWindow>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace kovra {

namespace {

xcb_connection_t* xServer() {
    const auto* x = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x == nullptr ? nullptr : x->connection();
}

struct Free {
    void operator()(void* reply) const { std::free(reply); }
};

xcb_atom_t atom(xcb_connection_t* server, std::string_view name) {
    const auto cookie = xcb_intern_atom(server, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const std::unique_ptr<xcb_intern_atom_reply_t, Free> reply(xcb_intern_atom_reply(server, cookie, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

// Requests activation from the window manager as a task bar does. The toolkit's own request names the program as the
// source. Many window managers then compare the times of the user's last input in both programs. A program that had no
// window until now loses the comparison.
void activateForUser(xcb_connection_t* server, xcb_window_t window) {
    constexpr std::uint32_t sourceIsPager = 2;
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = atom(server, "_NET_ACTIVE_WINDOW");
    message.data.data32[0] = sourceIsPager;
    message.data.data32[1] = XCB_CURRENT_TIME;
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(server)).data->root;
    xcb_send_event(server, 0, root, XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&message));
    xcb_flush(server);
}

// An event filter that activates a hidden or minimized window once it is exposed. The window manager may not manage the
// window before.
class ActivateOnExpose : public QObject {
  public:
    explicit ActivateOnExpose(QWindow& window) : QObject(&window), window_(window) { window.installEventFilter(this); }

  private:
    bool eventFilter(QObject* object, QEvent* event) override {
        if (event->type() == QEvent::Expose && window_.isExposed()) {
            activateForUser(xServer(), static_cast<xcb_window_t>(window_.winId()));
            deleteLater();
        }
        return QObject::eventFilter(object, event);
    }

    QWindow& window_;
};

}  // namespace

void bringToFront(QWidget& window, const std::string& activationToken) {
    if (!activationToken.empty()) qputenv("XDG_ACTIVATION_TOKEN", QByteArray::fromStdString(activationToken));
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    if (!window.isVisible()) window.show();  // from version 6.8, Qt closes an open menu when it shows a visible dialog
    window.raise();
    window.activateWindow();
    if (xServer() == nullptr) return;
    QWindow& shown = *window.windowHandle();
    if (shown.isExposed())
        activateForUser(xServer(), static_cast<xcb_window_t>(shown.winId()));
    else
        new ActivateOnExpose(shown);
}

}  // namespace kovra
