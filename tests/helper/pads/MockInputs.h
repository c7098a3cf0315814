#pragma once

#include <sys/stat.h>
#include <umockdev.h>

#include <filesystem>
#include <map>
#include <stdexcept>
#include <string>

#include "helper/Handles.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra::helper {

// The attributes of an input device in sysfs, and its properties in udev's database.
struct MockInput {
    std::string input = "input5";
    std::string name = "SYNA8004:00 06CB:CD8B Touchpad";
    std::string properties = "ID_INPUT=1\nID_INPUT_TOUCHPAD=1\n";
    std::string driverProperties = "0";  // a hexadecimal bit mask
    std::string keys = "30000 0 0 0 0";  // a hexadecimal bit mask: the left and the right button
    std::string bus = "0018";
    std::string vendor = "06cb";
    std::string hid = {};                           // the HID device, for example "0018:06CB:CD8B.0001", or empty
    std::string parent = "/devices/platform/host";  // "/devices/virtual" for a device without a parent
};

// A laptop's pad on I2C, and its twin.
inline const MockInput pad{.input = "input5", .hid = "0018:06CB:CD8B.0001"};
inline const MockInput twin{.input = "input4",
                            .name = "SYNA8004:00 06CB:CD8B Mouse",
                            .properties = "ID_INPUT=1\nID_INPUT_MOUSE=1\n",
                            .hid = "0018:06CB:CD8B.0001"};

// A simulation of sysfs with input devices, and of udev's events, for this process and the programs that it starts.
// addDevice() and removeDevice() send no event, so that tests can separate a change from its event.
class MockInputs {
  public:
    MockInputs() : testbed_(umockdev_testbed_new()) {
        const Handle<char, g_free> folder(umockdev_testbed_get_sys_dir(testbed_.get()));
        sys_ = folder.get();
        for (const char* inside : {"class/input", "bus/hid/devices", "bus/usb/devices", "bus/platform", "bus/input"})
            std::filesystem::create_directories(sys_ / inside);
    }

    // Adds a USB device whose attribute `removable` has this value. Returns its path, which can be the parent of an
    // input device.
    std::string plugUsb(const std::string& parent, const std::string& name, const std::string& removable) {
        const std::string path = parent + "/" + name;
        makeDevice(path, "bus/usb", "DEVTYPE=usb_device\n");
        writeFile(folder(path) / "removable", removable + "\n");
        return path;
    }

    void addDevice(const MockInput& device) {
        std::string parent = device.parent;
        if (parent != "/devices/virtual" && !std::filesystem::exists(folder(parent)))
            makeDevice(parent, "bus/platform", "DRIVER=host\n");
        if (!device.hid.empty()) {
            parent += "/" + device.hid;
            if (!std::filesystem::exists(folder(parent))) makeDevice(parent, "bus/hid", "HID_NAME=x\n");
        }
        const std::string path = parent + "/input/" + device.input;
        makeDevice(path, "class/input", "PRODUCT=" + device.bus + "/" + device.vendor + "/1/1\n");
        for (const char* inside : {"id", "capabilities"}) std::filesystem::create_directories(folder(path) / inside);
        writeFile(folder(path) / "name", device.name + "\n");
        writeFile(folder(path) / "properties", device.driverProperties + "\n");
        writeFile(folder(path) / "capabilities/key", device.keys + "\n");
        writeFile(folder(path) / "id/bustype", device.bus + "\n");
        writeFile(folder(path) / "id/vendor", device.vendor + "\n");
        writeFile(folder(path) / "inhibited", "0\n");
        const std::string node = "event" + device.input.substr(5);
        makeDevice(path + "/" + node, "class/input", "DEVNAME=input/" + node + "\n" + device.properties);
        for (const std::string& shown : {path, path + "/" + node})
            std::filesystem::create_directory_symlink("../.." + shown, inClass(shown.substr(shown.rfind('/') + 1)));
        paths_[device.input] = path;
    }
    // The folder of the device must exist.
    void sendEvent(const std::string& input, const std::string& action) {
        const std::string path = "/sys" + paths_.at(input);
        umockdev_testbed_uevent(testbed_.get(), (path + "/event" + input.substr(5)).c_str(), action.c_str());
    }
    // Sends an event of the device itself, which is not that of its node.
    void sendEventOfDevice(const std::string& input, const std::string& action) {
        umockdev_testbed_uevent(testbed_.get(), ("/sys" + paths_.at(input)).c_str(), action.c_str());
    }
    void removeDevice(const std::string& input) {
        std::filesystem::remove(inClass(input));
        std::filesystem::remove(inClass("event" + input.substr(5)));
    }

    void plug(const MockInput& device) {
        addDevice(device);
        sendEvent(device.input, "add");
    }
    void unplug(const std::string& input) {
        removeDevice(input);
        sendEvent(input, "remove");
        std::filesystem::remove_all(folder(paths_.at(input)));
    }

    std::filesystem::path attribute(const std::string& input) const { return folder(paths_.at(input)) / "inhibited"; }
    std::string inhibited(const std::string& input) const { return readFile(attribute(input)).substr(0, 1); }
    void inhibit(const std::string& input, const std::string& value) { writeFile(attribute(input), value + "\n"); }

    // Removes the attribute, as if the kernel could not inhibit input devices.
    void removeAttribute(const std::string& input) { std::filesystem::remove(attribute(input)); }
    struct stat rights(const std::string& input) const {
        struct stat status{};
        if (::stat(attribute(input).c_str(), &status) != 0) throw std::runtime_error("no attribute of " + input);
        return status;
    }

    // Makes writes of the attribute fail, until acceptWrites() sets a new value.
    void refuseWrites(const std::string& input) {
        std::filesystem::remove(attribute(input));
        std::filesystem::create_symlink("/dev/full", attribute(input));
    }
    void acceptWrites(const std::string& input, const std::string& value) {
        writeFile(folder(paths_.at(input)) / "next", value + "\n");
        std::filesystem::rename(folder(paths_.at(input)) / "next", attribute(input));
    }

  private:
    void makeDevice(const std::string& path, const std::string& subsystem, const std::string& uevent) {
        std::filesystem::create_directories(folder(path));
        writeFile(folder(path) / "uevent", uevent);
        std::filesystem::create_directory_symlink(sys_ / subsystem, folder(path) / "subsystem");
    }
    std::filesystem::path folder(const std::string& path) const { return sys_ / path.substr(1); }
    std::filesystem::path inClass(const std::string& name) const { return sys_ / "class/input" / name; }

    Handle<UMockdevTestbed, g_object_unref> testbed_;
    std::filesystem::path sys_;
    std::map<std::string, std::string> paths_;
};

}  // namespace kovra::helper
