#pragma once

#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "BLE_kovra/platform/linux/bus/BusConnection.h"
#include "BLE_kovra/platform/linux/session/DBusActivation.h"
#include "tests/platform/linux/bus/BusText.h"

namespace kovra {

// Another program on the session bus. It owns a name and records the calls that it receives. It sends an empty reply to
// the methods in `known`, and an error to all others.
class OtherProgram {
  public:
    // If there is a `table`, the program exports it as org.freedesktop.Application, at the path of BLE-kovra's object.
    OtherProgram(const char* name, std::vector<std::string> known, const sd_bus_vtable* table = nullptr)
        : known_(std::move(known)) {
        sd_bus* bus = nullptr;
        EXPECT_GE(sd_bus_open_user(&bus), 0);
        bus_.reset(bus);
        EXPECT_GE(sd_bus_add_filter(bus, nullptr, received, this), 0);
        if (table != nullptr) {
            EXPECT_GE(sd_bus_add_object_vtable(bus, nullptr, DBusActivation::path, "org.freedesktop.Application", table,
                                               nullptr),
                      0);
        }
        EXPECT_GE(sd_bus_request_name(bus, name, 0), 0);
        thread_ = std::thread([this] { serve(); });
    }
    ~OtherProgram() {
        ended_ = true;
        thread_.join();
    }
    OtherProgram(const OtherProgram&) = delete;
    OtherProgram& operator=(const OtherProgram&) = delete;

    // A handler for the methods in `table`. It sends an empty reply.
    static int replyNothing(sd_bus_message* call, void*, sd_bus_error*) {
        return answer(call, [](BusWriter&) {});
    }

    // Returns the received calls, each as "Member arguments".
    std::vector<std::string> calls() const {
        const std::lock_guard lock(mutex_);
        return calls_;
    }

  private:
    void serve() {
        while (!ended_) {
            constexpr std::uint64_t tenMilliseconds = 10'000;
            if (sd_bus_process(bus_.get(), nullptr) == 0) sd_bus_wait(bus_.get(), tenMilliseconds);
        }
    }
    static int received(sd_bus_message* message, void* context, sd_bus_error*) {
        auto* self = static_cast<OtherProgram*>(context);
        if (sd_bus_message_is_method_call(message, nullptr, nullptr) <= 0) return 0;
        const std::string member = sd_bus_message_get_member(message);
        const std::lock_guard lock(self->mutex_);
        self->calls_.push_back(member + " " + textOf(message));
        if (std::ranges::find(self->known_, member) == self->known_.end()) return 0;
        return answer(message, [](BusWriter&) {});
    }

    const std::vector<std::string> known_;
    BusHandle bus_;
    mutable std::mutex mutex_;
    std::vector<std::string> calls_;
    std::atomic<bool> ended_ = false;
    std::thread thread_;
};

}  // namespace kovra
