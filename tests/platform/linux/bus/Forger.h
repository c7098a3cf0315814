#pragma once

#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

#include <cstdint>
#include <string>

#include "BLE_kovra/platform/linux/bus/BusMessage.h"

namespace kovra {

// A client that owns no service's name, and sends signals directly to another client. The bus does not prevent this.
class Forger {
  public:
    enum class Bus { system, session };

    // Connects to the bus whose address is in the environment.
    explicit Forger(Bus bus) {
        sd_bus* opened = nullptr;
        EXPECT_GE(bus == Bus::system ? sd_bus_open_system(&opened) : sd_bus_open_user(&opened), 0);
        bus_.reset(opened);
    }

    // Sends the signal, and waits until the bus has handled it. The receiver gets it before any message that is sent
    // later.
    template <typename... Values>
    void send(const std::string& destination, const char* path, const char* interface, const char* signal,
              const char* types, Values... values) {
        sd_bus_message* made = nullptr;
        ASSERT_GE(sd_bus_message_new_signal(bus_.get(), &made, path, interface, signal), 0);
        const BusMessage message(made);
        ASSERT_GE(sd_bus_message_append(made, types, values...), 0);
        ASSERT_GE(sd_bus_message_set_destination(made, destination.c_str()), 0);
        ASSERT_GE(sd_bus_send(bus_.get(), made, nullptr), 0);
        constexpr const char* bus = "org.freedesktop.DBus";
        ASSERT_GE(sd_bus_call_method(bus_.get(), bus, "/org/freedesktop/DBus", bus, "GetId", nullptr, nullptr, ""), 0);
    }

    // Sends a file descriptor. Returns the name of the error with which the bus refuses that.
    std::string errorOfDescriptor(const std::string& destination, const char* path, const char* interface) {
        sd_bus_message* made = nullptr;
        EXPECT_GE(sd_bus_message_new_method_call(bus_.get(), &made, destination.c_str(), path, interface, "Take"), 0);
        const BusMessage message(made);
        EXPECT_GE(sd_bus_message_append(made, "h", 0), 0);
        sd_bus_error error{};
        constexpr std::uint64_t timeout = 5'000'000;
        sd_bus_call(bus_.get(), made, timeout, &error, nullptr);
        const std::string name = error.name == nullptr ? "" : error.name;
        sd_bus_error_free(&error);
        return name;
    }

    std::string name() { return nameOf(bus_.get()); }
    static std::string nameOf(sd_bus* client) {
        const char* name = nullptr;
        EXPECT_GE(sd_bus_get_unique_name(client, &name), 0);
        return name;
    }

  private:
    BusHandle bus_;
};

}  // namespace kovra
