#pragma once

#include <fuzzer/FuzzedDataProvider.h>
#include <systemd/sd-bus.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "BLE_kovra/platform/linux/bus/SessionBus.h"
#include "BLE_kovra/platform/linux/loop/SdEventLoop.h"

namespace kovra::fuzz {

// A session bus in this process, and everybody on it: it delivers whatever messages the input describes. There is one
// client, `session()`. All messages are well-formed, since a bus checks that itself; their types and values are not
// what the client expects.
class StandInBus {
  public:
    // The names of two other clients of the bus.
    static constexpr const char* service = ":1.2";
    static constexpr const char* stranger = ":1.3";
    static constexpr const char* client = ":1.1";

    StandInBus();
    StandInBus(const StandInBus&) = delete;
    StandInBus& operator=(const StandInBus&) = delete;

    SdEventLoop& loop() { return loop_; }
    SessionBus& session() { return *session_; }
    sd_bus* bus() const { return bus_.get(); }

    // Receives the client's calls to other services. The calls to the bus itself are answered: `service` owns each
    // name.
    std::function<void(sd_bus_message* call)> called;

    // Runs the loop until the client has nothing more to do.
    void settle();
    // Sends the message to the client, as if this sender had sent it. Returns whether it was sent.
    bool send(sd_bus_message* message, const char* sender);

  private:
    static int received(sd_bus_message* message, void* context, sd_bus_error* error);
    void answer(sd_bus_message* call);

    SdEventLoop loop_;
    BusHandle bus_;
    unsigned calls_ = 0;
    std::optional<SessionBus> session_;
};

// Appends values of these types to the message, as the input describes them. Returns false if a value is not possible.
bool appendValues(sd_bus_message* message, std::string_view types, FuzzedDataProvider& input);
// Appends values of these types or, if the input says so, of others. Returns the types.
std::string appendPerhaps(sd_bus_message* message, const std::string& types, FuzzedDataProvider& input);
// Returns a valid text: one of the words that the code knows, or any other one.
std::string wordFrom(FuzzedDataProvider& input);

}  // namespace kovra::fuzz
