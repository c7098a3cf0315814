#include "BLE_kovra/platform/linux/DBusMenuArguments.h"

namespace kovra {

namespace {

// Reads an array element by element: `readOne` gives the library's answer, 0 at the end of the array.
template <typename ReadOne>
int readArray(sd_bus_message* call, const char* of, std::size_t atMost, sd_bus_error* error, ReadOne readOne) {
    int result = sd_bus_message_enter_container(call, SD_BUS_TYPE_ARRAY, of);
    if (result < 0) return result;
    for (std::size_t count = 0; (result = readOne()) > 0; ++count) {
        if (count == atMost) {
            return sd_bus_error_setf(error, SD_BUS_ERROR_LIMITS_EXCEEDED, "A list of more than %zu.", atMost);
        }
    }
    return result < 0 ? result : sd_bus_message_exit_container(call);
}

}  // namespace

int readIds(sd_bus_message* call, std::size_t atMost, std::vector<std::int32_t>& ids, sd_bus_error* error) {
    return readArray(call, "i", atMost, error, [&] {
        std::int32_t id = 0;
        const int result = sd_bus_message_read(call, "i", &id);
        if (result > 0) ids.push_back(id);
        return result;
    });
}

int readNames(sd_bus_message* call, std::size_t atMost, std::set<std::string>& names, sd_bus_error* error) {
    return readArray(call, "s", atMost, error, [&] {
        const char* name = nullptr;
        const int result = sd_bus_message_read(call, "s", &name);
        if (result > 0) names.insert(name);
        return result;
    });
}

int readEvents(sd_bus_message* call, std::size_t atMost, std::vector<MenuEvent>& events, sd_bus_error* error) {
    return readArray(call, "(isvu)", atMost, error, [&] {
        int result = sd_bus_message_enter_container(call, SD_BUS_TYPE_STRUCT, "isvu");
        if (result <= 0) return result;
        MenuEvent event;
        result = readEvent(call, event);
        if (result < 0) return result;
        events.push_back(event);
        result = sd_bus_message_exit_container(call);
        return result < 0 ? result : 1;
    });
}

int readEvent(sd_bus_message* call, MenuEvent& event) {
    const char* name = nullptr;
    int result = sd_bus_message_read(call, "is", &event.id, &name);
    if (result >= 0) result = sd_bus_message_skip(call, "vu");
    if (result < 0) return result;
    event.name = name;
    return 1;
}

void writeIds(BusWriter& writer, const std::vector<std::int32_t>& ids) {
    writer.openArray("i");
    for (const std::int32_t id : ids) writer.integer(id);
    writer.close();
}

}  // namespace kovra
