#include <fuzzer/FuzzedDataProvider.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "BLE_kovra/platform/linux/tray/DBusMenu.h"
#include "tests/fuzz/Promise.h"
#include "tests/fuzz/StandInBus.h"

// Calls of the menu on the session bus, with any arguments.

namespace {

using namespace kovra;

struct Method {
    const char* name;
    const char* takes;
    const char* returns;
};
constexpr std::array methods{
    Method{"GetLayout", "iias", "u(ia{sv}av)"}, Method{"GetGroupProperties", "aias", "a(ia{sv})"},
    Method{"GetProperty", "is", "v"},           Method{"Event", "isvu", ""},
    Method{"EventGroup", "a(isvu)", "ai"},      Method{"AboutToShow", "i", "b"},
    Method{"AboutToShowGroup", "ai", "aiai"}};

struct Answers {
    std::size_t count = 0;
    std::string_view returns;

    static int take(sd_bus_message* reply, void* context, sd_bus_error*) {
        auto* self = static_cast<Answers*>(context);
        ++self->count;
        const bool isError = sd_bus_message_is_method_error(reply, nullptr) > 0;
        fuzz::promise(isError || self->returns == sd_bus_message_get_signature(reply, 1), "a reply has its types");
        return 0;
    }
};

Menu menuOf(std::size_t items) {
    Menu menu;
    for (std::size_t i = 0; i < items; ++i) {
        MenuItem item;
        item.title = i % 2 == 0 ? "Settings_" : "\xFF";
        item.keyEquivalent = ",";
        if (i % 3 == 0) item.state = MenuItemState::on;
        menu.items.push_back(i == 2 ? MenuItem::separator() : item);
    }
    return menu;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static fuzz::StandInBus bus;
    FuzzedDataProvider input(data, size);
    Menu menu = menuOf(input.ConsumeIntegralInRange<std::size_t>(0, 6));
    std::vector<std::size_t> chosen;
    DBusMenu exported(menu, [&](std::size_t position) { chosen.push_back(position); });
    exported.exportOn(*bus.session().connection());
    exported.menuReplaced();

    for (int calls = 0; calls < 6 && input.remaining_bytes() > 0; ++calls) {
        if (input.ConsumeIntegralInRange(0, 9) == 9) {
            menu = menuOf(input.ConsumeIntegralInRange<std::size_t>(0, 6));
            exported.menuReplaced();
        }
        const Method& method = methods.at(input.ConsumeIntegralInRange<std::size_t>(0, methods.size() - 1));
        sd_bus_message* made = nullptr;
        sd_bus_message_new_method_call(bus.bus(), &made, fuzz::StandInBus::client, DBusMenu::path, DBusMenu::interface,
                                       method.name);
        const BusMessage call(made);
        const std::string types = fuzz::appendPerhaps(made, method.takes, input);
        Answers answers{.returns = method.returns};
        sd_bus_slot* slot = nullptr;
        if (sd_bus_message_set_sender(made, fuzz::StandInBus::stranger) < 0 ||
            sd_bus_call_async(bus.bus(), &slot, made, Answers::take, &answers, 0) < 0)
            continue;
        const BusSlot pending(slot);
        chosen.clear();
        bus.settle();
        fuzz::promise(answers.count == 1, "each call has one answer");
        const std::string_view name = method.name;
        fuzz::promise(chosen.empty() || (name.starts_with("Event") && types == method.takes), "only events choose");
        fuzz::promise(chosen.size() <= 4, "an event chooses one item");
        for (const std::size_t position : chosen) fuzz::promise(position < menu.items.size(), "only items are chosen");
    }
    exported.detach();
    bus.settle();
    return 0;
}
