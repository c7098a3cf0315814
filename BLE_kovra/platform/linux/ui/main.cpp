// The window process: shows what the resident program sends over its socket, and sends back what the user does. It ends
// when the resident program closes the socket.

#include <fcntl.h>
#include <sys/socket.h>

#include <QApplication>
#include <QLoggingCategory>
#include <QSocketNotifier>
#include <iostream>
#include <optional>
#include <variant>

#include "BLE_kovra/platform/linux/ui/style/ApplicationIcon.h"
#include "BLE_kovra/platform/linux/ui/style/DesktopColors.h"
#include "BLE_kovra/platform/linux/ui/style/EarlyFonts.h"
#include "BLE_kovra/platform/linux/ui/style/PortalSettings.h"
#include "BLE_kovra/platform/linux/ui/style/TextSize.h"
#include "BLE_kovra/platform/linux/ui/tray/RequestedMenu.h"
#include "BLE_kovra/platform/linux/ui/tray/TrayIcon.h"
#include "BLE_kovra/platform/linux/ui/windows/AlertStack.h"
#include "BLE_kovra/platform/linux/ui/windows/ViewWindow.h"
#include "BLE_kovra/platform/linux/wire/Encoding.h"
#include "BLE_kovra/platform/linux/wire/LineSocket.h"

namespace kovra {
namespace {

bool isSocket(int descriptor) {
    int type = 0;
    socklen_t size = sizeof type;
    return ::getsockopt(descriptor, SOL_SOCKET, SO_TYPE, &type, &size) == 0;
}

void send(const ToResident& message) { sendLine(windowSocket, encode(message)); }

// The tray icon, the window, the menu and the alerts of this process. Each function handles one kind of message.
class Screen {
  public:
    void operator()(const ShowTray& shown) {
        if (!tray_) tray_.emplace(send);
        tray_->show(shown);
    }
    void operator()(const HideTray&) { tray_.reset(); }
    void operator()(const PopUpMenu& request) { menu_.show(request); }
    void operator()(const ShowWindow& shown) {
        if (!window_) window_.emplace(send);
        window_->showWindow(shown);
    }
    void operator()(const HideWindow&) {
        if (window_) window_->hide();
    }
    void operator()(const ShowAlerts& shown) { alerts_.show(shown); }
    void operator()(const Ping& ping) { send(Pong{ping.number}); }

  private:
    std::optional<TrayIcon> tray_;
    std::optional<ViewWindow> window_;
    RequestedMenu menu_{send};
    AlertStack alerts_{send};
};

int run(int argc, char** argv) {
    QCoreApplication::setAttribute(Qt::AA_DisableSessionManager);
    QCoreApplication::setApplicationName("BLE-kovra");
    // Qt 6.8 logs a line whenever a window closes that had the keyboard on Wayland.
    QLoggingCategory::setFilterRules("qt.qpa.wayland.textinput.warning=false");
    loadFontsEarly();
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setWindowIcon(windowIcon());
    QGuiApplication::setDesktopFileName("org.ble_kovra.BLEKovra");  // Wayland desktops find the icon by this name

    DesktopColors colors;
    TextSize textSize;
    const PortalSettings settings({colors.setting(), textSize.setting()});
    Screen screen;
    LineReader reader(longestToWindow);
    QSocketNotifier notifier(windowSocket, QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, [&] {
        const auto lines = receiveLines(windowSocket, reader);
        if (!lines) {
            notifier.setEnabled(false);
            QCoreApplication::quit();
            return;
        }
        for (const std::string& line : *lines) {
            if (const auto message = decodeToWindow(line)) std::visit(screen, *message);
        }
    });
    return QCoreApplication::exec();
}

}  // namespace
}  // namespace kovra

int main(int argc, char** argv) {
    if (!kovra::isSocket(kovra::windowSocket)) {
        std::cerr << "ble-kovra-ui: запускается программой ble-kovra, а не вручную\n";
        return 2;
    }
    ::fcntl(kovra::windowSocket, F_SETFD, FD_CLOEXEC);
    return kovra::run(argc, argv);
}
