#pragma once

#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "BLE_kovra/platform/linux/bus/SystemBus.h"

namespace kovra {

// A substitute for BlueZ on a bus that has no real one, for as long as this object lives. It exports adapters and
// devices.
class StandInBluez {
  public:
    explicit StandInBluez(SdEventLoop& loop) : machine_(loop) {
        sd_bus* bus = machine_.bus();
        EXPECT_GE(sd_bus_add_filter(bus, nullptr, called, this), 0);
        EXPECT_GE(sd_bus_add_object_manager(bus, &manager_, "/"), 0);
    }
    StandInBluez(const StandInBluez&) = delete;
    StandInBluez& operator=(const StandInBluez&) = delete;
    ~StandInBluez() {
        objects_.clear();
        sd_bus_slot_unref(manager_);
    }

    // Acquires BlueZ's name, so that clients can query it. The first reply contains the objects that were added before.
    void acquireName() { EXPECT_GE(sd_bus_request_name(machine_.bus(), "org.bluez", 0), 0); }

    void addAdapter(const std::string& path, const std::string& address) {
        static const sd_bus_vtable table[] = {
            SD_BUS_VTABLE_START(0), SD_BUS_PROPERTY("Address", "s", text<&Object::address>, 0, 0), SD_BUS_VTABLE_END};
        add(path, "org.bluez.Adapter1", table, {.address = address});
    }
    void addDevice(const std::string& adapter, const std::string& address, bool isConnected) {
        static const sd_bus_vtable table[] = {
            SD_BUS_VTABLE_START(0),
            SD_BUS_PROPERTY("Name", "s", text<&Object::address>, 0, 0),
            SD_BUS_PROPERTY("Address", "s", text<&Object::address>, 0, 0),
            SD_BUS_PROPERTY("Adapter", "o", text<&Object::adapter>, 0, 0),
            SD_BUS_PROPERTY("Paired", "b", yes, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
            SD_BUS_PROPERTY("Connected", "b", connected, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
            SD_BUS_VTABLE_END};
        add(pathOf(adapter, address), "org.bluez.Device1", table,
            {.address = address, .adapter = adapter, .isConnected = isConnected});
    }
    void setConnected(const std::string& adapter, const std::string& address, bool isConnected) {
        objects_.at(pathOf(adapter, address))->isConnected = isConnected;
        emitChange(adapter, address, "Connected");
    }
    // Emits the signal for a change of this property, whether the property has changed or not.
    void emitChange(const std::string& adapter, const std::string& address, const char* property) {
        EXPECT_GE(sd_bus_emit_properties_changed(machine_.bus(), pathOf(adapter, address).c_str(), "org.bluez.Device1",
                                                 property, nullptr),
                  0);
        flush();
    }
    // Emits the signals about this device with values of other types.
    void emitInvalidSignals(const std::string& adapter, const std::string& address) {
        const std::string path = pathOf(adapter, address);
        constexpr const char *manager = "org.freedesktop.DBus.ObjectManager", *device = "org.bluez.Device1";
        sd_bus_emit_signal(machine_.bus(), path.c_str(), "org.freedesktop.DBus.Properties", "PropertiesChanged", "ss",
                           device, "Connected");
        sd_bus_emit_signal(machine_.bus(), "/", manager, "InterfacesAdded", "ss", path.c_str(), device);
        sd_bus_emit_signal(machine_.bus(), "/", manager, "InterfacesRemoved", "sas", path.c_str(), 1, device);
        sd_bus_emit_signal(machine_.bus(), "/", manager, "InterfacesRemoved", "os", path.c_str(), device);
        flush();
    }
    void removeDevice(const std::string& adapter, const std::string& address) {
        const std::string path = pathOf(adapter, address);
        EXPECT_GE(sd_bus_emit_interfaces_removed(machine_.bus(), path.c_str(), "org.bluez.Device1", nullptr), 0);
        objects_.erase(path);
        flush();
    }

    int queries = 0;
    std::function<void()> onQuery;

  private:
    struct Object {
        std::string address = {};
        std::string adapter = {};
        bool isConnected = false;
        BusSlot slot = {};
    };

    static std::string pathOf(const std::string& adapter, std::string address) {
        std::ranges::replace(address, ':', '_');
        return adapter + "/dev_" + address;
    }
    void add(const std::string& path, const char* interface, const sd_bus_vtable* table, Object object) {
        auto& kept = objects_[path] = std::make_unique<Object>(std::move(object));
        sd_bus_slot* slot = nullptr;
        EXPECT_GE(sd_bus_add_object_vtable(machine_.bus(), &slot, path.c_str(), interface, table, kept.get()), 0);
        kept->slot.reset(slot);
        EXPECT_GE(sd_bus_emit_interfaces_added(machine_.bus(), path.c_str(), interface, nullptr), 0);
        flush();
    }
    void flush() { EXPECT_GE(sd_bus_flush(machine_.bus()), 0); }

    static int called(sd_bus_message* message, void* context, sd_bus_error*) {
        if (sd_bus_message_is_method_call(message, nullptr, "GetManagedObjects") > 0) {
            auto* bluez = static_cast<StandInBluez*>(context);
            ++bluez->queries;
            if (bluez->onQuery) bluez->onQuery();
        }
        return 0;
    }
    template <std::string Object::* member>
    static int text(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void* object,
                    sd_bus_error*) {
        const char* type = member == &Object::adapter ? "o" : "s";
        return sd_bus_message_append(reply, type, (static_cast<Object*>(object)->*member).c_str());
    }
    static int connected(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void* object,
                         sd_bus_error*) {
        return sd_bus_message_append(reply, "b", static_cast<Object*>(object)->isConnected ? 1 : 0);
    }
    static int yes(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*, sd_bus_error*) {
        return sd_bus_message_append(reply, "b", 1);
    }

    SystemBus machine_;
    sd_bus_slot* manager_ = nullptr;
    std::map<std::string, std::unique_ptr<Object>> objects_;
};

}  // namespace kovra
