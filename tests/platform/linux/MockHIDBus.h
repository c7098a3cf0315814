#pragma once

#include <umockdev.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <utility>

#include "BLE_kovra/platform/linux/Handles.h"

namespace kovra {

// What a HID node shows in sysfs.
struct MockHIDNode {
    std::string name = {};                                     // BBBB:VVVV:PPPP.NNNN
    std::optional<std::string> product = "apple";              // HID_NAME
    std::optional<std::string> id = "0003:0000046D:0000C077";  // HID_ID
    std::optional<std::string> driver = "hid-generic";         // bound to it
};

// A HID bus of the test's own: a sysfs that this process takes for the machine's, and events that it takes for
// udevd's. Node and event are separate steps, as they are in the kernel, so that a test can have them disagree.
class MockHIDBus {
  public:
    MockHIDBus() : testbed_(umockdev_testbed_new()) {
        const Handle<char, g_free> folder(umockdev_testbed_get_sys_dir(testbed_.get()));
        sys_ = folder.get();
        std::filesystem::create_directories(sys_ / "bus/hid/devices");
        std::filesystem::create_directories(sys_ / "bus/hid/drivers");
    }

    // The name of the next interface of a mouse. Names are numbered and never come again.
    std::string nextName() {
        char name[32];
        std::snprintf(name, sizeof name, "0003:046D:C077.%04X", static_cast<unsigned>(++lastNumber_));
        return name;
    }

    // The node alone, without an event.
    void appear(const MockHIDNode& node) {
        std::filesystem::create_directories(folder(node.name));
        std::filesystem::create_directory_symlink("../../../../../bus/hid", folder(node.name) / "subsystem");
        std::filesystem::create_directory_symlink("../../.." + path(node.name), link(node.name));
        show(node);
    }
    // What the node shows becomes this.
    void show(const MockHIDNode& node) {
        std::ofstream uevent(folder(node.name) / "uevent", std::ios::binary | std::ios::trunc);
        if (node.driver) uevent << "DRIVER=" << *node.driver << '\n';
        if (node.id) uevent << "HID_ID=" << *node.id << '\n';
        if (node.product) uevent << "HID_NAME=" << *node.product << '\n';
        uevent << "HID_PHYS=usb-0000:00:1d.0-1/input0\nHID_UNIQ=\n";
        std::filesystem::remove(folder(node.name) / "driver");
        if (!node.driver) return;
        std::filesystem::create_directories(sys_ / "bus/hid/drivers" / *node.driver);
        std::filesystem::create_directory_symlink("../../../../../bus/hid/drivers/" + *node.driver,
                                                  folder(node.name) / "driver");
    }
    // The bus lets go of the node, which then still has its own folder: the kernel sends "remove" in this state.
    void leaveBus(const std::string& name) { std::filesystem::remove(link(name)); }
    void vanish(const std::string& name) {
        leaveBus(name);
        std::filesystem::remove_all(folder(name));
    }
    // The event alone. The node's folder is there. No more than ten events may wait to be read.
    void tell(const std::string& name, const std::string& action) {
        umockdev_testbed_uevent(testbed_.get(), ("/sys" + path(name)).c_str(), action.c_str());
    }

    // A device comes as devices do: node, "add" and, if it has a driver, "bind".
    void plug(const MockHIDNode& node) {
        appear(node);
        tell(node.name, "add");
        if (node.driver) tell(node.name, "bind");
    }
    void unplug(const std::string& name) {
        leaveBus(name);
        tell(name, "remove");
        vanish(name);
    }

  private:
    static std::string path(const std::string& name) { return "/devices/virtual/misc/uhid/" + name; }
    std::filesystem::path folder(const std::string& name) const { return sys_ / path(name).substr(1); }
    std::filesystem::path link(const std::string& name) const { return sys_ / "bus/hid/devices" / name; }

    Handle<UMockdevTestbed, g_object_unref> testbed_;
    std::filesystem::path sys_;
    int lastNumber_ = 0;
};

}  // namespace kovra
