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

// What a HID node shows in sysfs.
struct MockHIDNode {
    std::string name = {};                                     // BBBB:VVVV:PPPP.NNNN
    std::optional<std::string> product = "apple";              // HID_NAME
    std::optional<std::string> id = "0003:0000046D:0000C077";  // HID_ID
    std::optional<std::string> driver = "hid-generic";         // bound to it
    std::string phys = "usb-0000:00:1d.0-1/input0";
    std::string uniq = {};
};

// What the battery of a HID device shows. A value that is absent cannot be read.
struct MockBattery {
    std::optional<std::string> online = "1";
    std::optional<std::string> status = "Discharging";
    std::optional<std::string> scope = "Device";
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
        uevent << "HID_PHYS=" << node.phys << "\nHID_UNIQ=" << node.uniq << '\n';
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

    // The node's battery as it is from now on, without an event. It has as many as there are names.
    void show(const std::string& name, const MockBattery& battery, const std::string& batteryName = "hidpp_battery_0") {
        const auto its = powerSupply(path(name), batteryName);
        for (const auto& [file, value] :
             {std::pair{"online", battery.online}, {"status", battery.status}, {"scope", battery.scope}}) {
            std::filesystem::remove(its / file);
            if (value) std::ofstream(its / file) << *value << '\n';
        }
    }
    void tellOfBattery(const std::string& name, const std::string& action = "change") {
        umockdev_testbed_uevent(testbed_.get(), ("/sys" + path(name) + "/power_supply/hidpp_battery_0").c_str(),
                                action.c_str());
    }
    // The machine's own battery tells of a change.
    void tellOfLaptopBattery() {
        const std::string folder = "/devices/LNXSYSTM:00/LNXSYBUS:00/PNP0C0A:00";
        powerSupply(folder, "BAT0");
        umockdev_testbed_uevent(testbed_.get(), ("/sys" + folder + "/power_supply/BAT0").c_str(), "change");
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
