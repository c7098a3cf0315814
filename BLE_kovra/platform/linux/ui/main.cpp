// The window process: shows what the resident program tells it over its socket, tells it what the user did, and ends
// with the socket.

#include <fcntl.h>
#include <sys/socket.h>

#include <QApplication>
#include <iostream>
#include <optional>
#include <variant>

#include "BLE_kovra/platform/linux/ui/Connection.h"
#include "BLE_kovra/platform/linux/ui/style/ApplicationIcon.h"
#include "BLE_kovra/platform/linux/ui/tray/RequestedMenu.h"
#include "BLE_kovra/platform/linux/ui/tray/TrayIcon.h"
#include "BLE_kovra/platform/linux/ui/windows/AlertStack.h"
#include "BLE_kovra/platform/linux/ui/windows/ViewWindow.h"

namespace {

bool isSocket(int descriptor) {
    int type = 0;
    socklen_t size = sizeof type;
    return ::getsockopt(descriptor, SOL_SOCKET, SO_TYPE, &type, &size) == 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (!isSocket(kovra::windowSocket)) {
        std::cerr << "ble-kovra-ui: запускается программой ble-kovra, а не вручную\n";
        return 2;
    }
    ::fcntl(kovra::windowSocket, F_SETFD, FD_CLOEXEC);

    QCoreApplication::setAttribute(Qt::AA_DisableSessionManager);
    QCoreApplication::setApplicationName("BLE-kovra");
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setWindowIcon(kovra::windowIcon());
    QGuiApplication::setDesktopFileName("org.ble_kovra.BLEKovra");  // by which Wayland finds the icon

    kovra::Connection connection(kovra::windowSocket);
    std::optional<kovra::TrayIcon> tray;
    const auto showTray = [&](const kovra::ShowTray& shown) {
        if (!tray) {
            tray.emplace();
            tray->menu().onChosen = [&](std::size_t position) { connection.send(kovra::ItemChosen{position}); };
        }
        tray->show(shown);
    };
    std::optional<kovra::ViewWindow> window;
    const auto showWindow = [&](const kovra::ShowWindow& shown) {
        if (!window) {
            window.emplace();
            window->onAct = [&](const kovra::ToResident& act) { connection.send(act); };
        }
        window->showWindow(shown);
    };
    kovra::RequestedMenu menu;
    menu.onClosed = [&](const kovra::MenuClosed& closed) { connection.send(closed); };
    kovra::AlertStack alerts;
    alerts.onAnswered = [&](const kovra::AlertAnswered& answered) { connection.send(answered); };
    connection.onEnd = [] { QCoreApplication::quit(); };
    connection.onMessage = [&](const kovra::ToWindow& message) {
        if (const auto* shown = std::get_if<kovra::ShowTray>(&message)) showTray(*shown);
        if (std::holds_alternative<kovra::HideTray>(message)) tray.reset();
        if (const auto* request = std::get_if<kovra::PopUpMenu>(&message)) menu.show(*request);
        if (const auto* shown = std::get_if<kovra::ShowWindow>(&message)) showWindow(*shown);
        if (std::holds_alternative<kovra::HideWindow>(message) && window) window->hide();
        if (const auto* shown = std::get_if<kovra::ShowAlerts>(&message)) alerts.show(*shown);
    };
    return QCoreApplication::exec();
}
