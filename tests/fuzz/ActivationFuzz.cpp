#include <fuzzer/FuzzedDataProvider.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "BLE_kovra/platform/linux/session/DBusActivation.h"
#include "tests/fuzz/Promise.h"
#include "tests/fuzz/StandInBus.h"

// Calls of the program's object on the session bus, with any arguments.

namespace {

using namespace kovra;

struct Outcome {
    int answers = 0;
    bool isRefused = false;

    static int take(sd_bus_message* reply, void* context, sd_bus_error*) {
        auto* self = static_cast<Outcome*>(context);
        ++self->answers;
        self->isRefused = sd_bus_message_is_method_error(reply, nullptr) > 0;
        return 0;
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static fuzz::StandInBus bus;
    FuzzedDataProvider input(data, size);
    int activated = 0, requested = 0;
    std::string token;
    DBusActivation activation(
        bus.loop(),
        [&](const std::string& its) {
            ++activated;
            token = its;
        },
        [&](ApplicationAction, const std::string& its) {
            ++requested;
            token = its;
        });
    activation.exportOn(*bus.session().connection());

    for (int calls = 0; calls < 6 && input.remaining_bytes() > 0; ++calls) {
        const bool isAction = input.ConsumeBool();
        sd_bus_message* made = nullptr;
        sd_bus_message_new_method_call(bus.bus(), &made, fuzz::StandInBus::client, DBusActivation::path,
                                       "org.freedesktop.Application", isAction ? "ActivateAction" : "Activate");
        const BusMessage call(made);
        fuzz::appendPerhaps(made, isAction ? "sava{sv}" : "a{sv}", input);
        Outcome outcome;
        sd_bus_slot* slot = nullptr;
        if (sd_bus_message_set_sender(made, fuzz::StandInBus::stranger) < 0 ||
            sd_bus_call_async(bus.bus(), &slot, made, Outcome::take, &outcome, 0) < 0)
            continue;
        const BusSlot pending(slot);
        activated = requested = 0;
        token.clear();
        bus.settle();
        fuzz::promise(outcome.answers == 1, "each call has one answer");
        fuzz::promise(activated == (!isAction && !outcome.isRefused ? 1 : 0), "an activation has its effect once");
        fuzz::promise(requested == (isAction && !outcome.isRefused ? 1 : 0), "an action has its effect once");
        fuzz::promise(token.find('\0') == std::string::npos, "a token is a text");
    }
    activation.detach();
    bus.settle();
    return 0;
}
