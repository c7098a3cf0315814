// A tray program of the usual design: one process with the toolkit's item, udev's events of HID devices, and a
// connection to the X server with the hot key grabbed. Before it shows the icon, it lists the devices and queries
// whether there is a panel.

#include <libudev.h>
#include <xcb/xcb.h>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QSocketNotifier>
#include <cstdint>
#include <cstdlib>

#include "bench/floors/ToolkitItem.h"

namespace {

void listDevices(udev* context) {
    udev_enumerate* devices = udev_enumerate_new(context);
    udev_enumerate_add_match_subsystem(devices, "hid");
    udev_enumerate_scan_devices(devices);
    for (udev_list_entry* entry = udev_enumerate_get_list_entry(devices); entry;
         entry = udev_list_entry_get_next(entry)) {
        udev_device* device = udev_device_new_from_syspath(context, udev_list_entry_get_name(entry));
        udev_device_get_property_value(device, "HID_NAME");
        udev_device_unref(device);
    }
    udev_enumerate_unref(devices);
}

void listenToDevices() {
    udev* context = udev_new();
    udev_monitor* monitor = udev_monitor_new_from_netlink(context, "udev");
    udev_monitor_filter_add_match_subsystem_devtype(monitor, "hid", nullptr);
    udev_monitor_enable_receiving(monitor);
    listDevices(context);
    auto* notifier = new QSocketNotifier(udev_monitor_get_fd(monitor), QSocketNotifier::Read, qApp);
    QObject::connect(notifier, &QSocketNotifier::activated, [monitor] {
        while (udev_device* device = udev_monitor_receive_device(monitor)) udev_device_unref(device);
    });
}

void grabHotKey() {
    constexpr xcb_keycode_t t = 28;
    xcb_connection_t* x = xcb_connect(nullptr, nullptr);
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(x)).data->root;
    for (const int locks : {0, +XCB_MOD_MASK_LOCK, +XCB_MOD_MASK_2, XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2}) {
        xcb_grab_key(x, 1, root, static_cast<std::uint16_t>(XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1 | locks), t,
                     XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    }
    xcb_flush(x);
    auto* notifier = new QSocketNotifier(xcb_get_file_descriptor(x), QSocketNotifier::Read, qApp);
    QObject::connect(notifier, &QSocketNotifier::activated, [x] {
        while (xcb_generic_event_t* event = xcb_poll_for_event(x)) std::free(event);
    });
}

void askForPanel() {
    const QString watcher = "org.kde.StatusNotifierWatcher";
    QDBusMessage question =
        QDBusMessage::createMethodCall(watcher, "/StatusNotifierWatcher", "org.freedesktop.DBus.Properties", "Get");
    question << watcher << "IsStatusNotifierHostRegistered";
    QDBusConnection::sessionBus().call(question);
}

}  // namespace

int main(int count, char** arguments) {
    const QApplication application(count, arguments);
    QApplication::setQuitOnLastWindowClosed(false);
    listenToDevices();
    grabHotKey();
    askForPanel();
    floors::ToolkitItem item;
    item.show();
    return QApplication::exec();
}
