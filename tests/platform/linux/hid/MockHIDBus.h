#pragma once

#include <umockdev.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <utility>

#include "BLE_kovra/platform/linux/loop/Handles.h"

namespace kovra {

// The properties of a HID node in sysfs.
struct MockHIDNode {
    std::string name = {};                                     // bus:vendor:product.number, in hexadecimal
    std::optional<std::string> product = "apple";              // HID_NAME
    std::optional<std::string> id = "0003:0000046D:0000C077";  // HID_ID
    std::optional<std::string> driver = "hid-generic";         // bound to the node
    std::string phys = "usb-0000:00:1d.0-1/input0";
    std::string uniq = {};
};

// The properties of a HID device's battery in sysfs. A property without a value cannot be read.
struct MockBattery {
    std::optional<std::string> online = "1";
    std::optional<std::string> status = "Discharging";
    std::optional<std::string> scope = "Device";
};

// A simulation of sysfs with HID nodes, and of udevd's events, for this process. Adding a node and sending its event
// are separate steps, so that a test can do one without the other.
class MockHIDBus {
  public:
    MockHIDBus() : testbed_(umockdev_testbed_new()) {
        const Handle<char, g_free> folder(umockdev_testbed_get_sys_dir(testbed_.get()));
        sys_ = folder.get();
        std::filesystem::create_directories(sys_ / "bus/hid/devices");
        std::filesystem::create_directories(sys_ / "bus/hid/drivers");
    }

    // Returns the name of the next interface of a mouse. Names are numbered and never reused.
    std::string nextName() {
        char name[32];
        std::snprintf(name, sizeof name, "0003:046D:C077.%04X", static_cast<unsigned>(++lastNumber_));
        return name;
    }

    void addNode(const MockHIDNode& node) {
        std::filesystem::create_directories(folder(node.name));
        std::filesystem::create_directory_symlink("../../../../../bus/hid", folder(node.name) / "subsystem");
        std::filesystem::create_directory_symlink("../../.." + path(node.name), link(node.name));
        updateNode(node);
    }
    void updateNode(const MockHIDNode& node) {
        std::ofstream uevent(folder(node.name) / "uevent", std::ios::binary | std::ios::trunc);
        if (node.driver) uevent << "DRIVER=" << *node.driver << '\n';
        if (node.id) uevent << "HID_ID=" << *node.id << '\n';
        if (node.product) uevent << "HID_NAME=" << *node.product << '\n';
        uevent << "HID_PHYS=" << node.phys << "\nHID_UNIQ=" << node.uniq << '\n';
        std::filesystem::remove(folder(node.name) / "driver");
        if (!node.driver) return;
        std::filesystem::create_directories(sys_ / "bus/hid/drivers" / *node.driver);
        std::filesystem::create_directory_symlink("../../../../../bus/hid/drivers/" + *node.driver,
                                                  folder(node.name) / "driver");
    }
    // Removes the node from the bus, but keeps the node's folder. The kernel sends "remove" in this state.
    void removeFromBus(const std::string& name) { std::filesystem::remove(link(name)); }
    void removeNode(const std::string& name) {
        removeFromBus(name);
        std::filesystem::remove_all(folder(name));
    }
    // Sends an event without changing a node. The folder of the node must exist. At most ten events may be pending.
    void sendEvent(const std::string& name, const std::string& action) {
        umockdev_testbed_uevent(testbed_.get(), ("/sys" + path(name)).c_str(), action.c_str());
    }

    // Sets the battery of the node, without an event. A node may have several batteries, each with a name of its own.
    void setBattery(const std::string& name, const MockBattery& battery,
                    const std::string& batteryName = "hidpp_battery_0") {
        const auto its = powerSupply(path(name), batteryName);
        for (const auto& [file, value] :
             {std::pair{"online", battery.online}, {"status", battery.status}, {"scope", battery.scope}}) {
            std::filesystem::remove(its / file);
            if (value) std::ofstream(its / file) << *value << '\n';
        }
    }
    void sendBatteryEvent(const std::string& name, const std::string& action = "change") {
        umockdev_testbed_uevent(testbed_.get(), ("/sys" + path(name) + "/power_supply/hidpp_battery_0").c_str(),
                                action.c_str());
    }
    void sendLaptopBatteryEvent() {
        const std::string folder = "/devices/LNXSYSTM:00/LNXSYBUS:00/PNP0C0A:00";
        powerSupply(folder, "BAT0");
        umockdev_testbed_uevent(testbed_.get(), ("/sys" + folder + "/power_supply/BAT0").c_str(), "change");
    }

    // Adds a device as the kernel does: the node, "add" and, if it has a driver, "bind".
    void plug(const MockHIDNode& node) {
        addNode(node);
        sendEvent(node.name, "add");
        if (node.driver) sendEvent(node.name, "bind");
    }
    void unplug(const std::string& name) {
        removeFromBus(name);
        sendEvent(name, "remove");
        removeNode(name);
    }

  private:
    static std::string path(const std::string& name) { return "/devices/virtual/misc/uhid/" + name; }
    std::filesystem::path powerSupply(const std::string& owner, const std::string& name) {
        const auto its = sys_ / owner.substr(1) / "power_supply" / name;
        if (std::filesystem::exists(its)) return its;
        std::filesystem::create_directories(sys_ / "class/power_supply");
        std::filesystem::create_directories(its);
        std::filesystem::create_directory_symlink(std::filesystem::relative(sys_ / "class/power_supply", its),
                                                  its / "subsystem");
        std::ofstream(its / "uevent") << "POWER_SUPPLY_NAME=" << name << '\n';
        return its;
    }
    std::filesystem::path folder(const std::string& name) const { return sys_ / path(name).substr(1); }
    std::filesystem::path link(const std::string& name) const { return sys_ / "bus/hid/devices" / name; }

    Handle<UMockdevTestbed, g_object_unref> testbed_;
    std::filesystem::path sys_;
    int lastNumber_ = 0;
};

}  // namespace kovra
