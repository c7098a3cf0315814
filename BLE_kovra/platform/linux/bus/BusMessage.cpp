#include "BLE_kovra/platform/linux/bus/BusMessage.h"

#include <string>

#include "BLE_kovra/platform/Utf8.h"

namespace kovra {

BusWriter& BusWriter::boolean(bool value) {
    const int number = value ? 1 : 0;
    return append(SD_BUS_TYPE_BOOLEAN, &number);
}

BusWriter& BusWriter::integer(std::int32_t value) { return append(SD_BUS_TYPE_INT32, &value); }

BusWriter& BusWriter::natural(std::uint32_t value) { return append(SD_BUS_TYPE_UINT32, &value); }

BusWriter& BusWriter::text(std::string_view value) { return append(SD_BUS_TYPE_STRING, validUtf8(value).c_str()); }

BusWriter& BusWriter::path(const char* value) { return append(SD_BUS_TYPE_OBJECT_PATH, value); }

BusWriter& BusWriter::bytes(const std::vector<std::uint8_t>& value) {
    if (result_ >= 0) result_ = sd_bus_message_append_array(message_, SD_BUS_TYPE_BYTE, value.data(), value.size());
    return *this;
}

BusWriter& BusWriter::close() {
    if (result_ >= 0) result_ = sd_bus_message_close_container(message_);
    return *this;
}

BusWriter& BusWriter::open(char kind, const char* of) {
    if (result_ >= 0) result_ = sd_bus_message_open_container(message_, kind, of);
    return *this;
}

BusWriter& BusWriter::append(char type, const void* value) {
    if (result_ >= 0) result_ = sd_bus_message_append_basic(message_, type, value);
    return *this;
}

std::optional<bool> readBoolean(sd_bus_message* message, std::string_view name) {
    int value = -1;
    const int result = forEachEntry(message, "{sv}", [&](std::string_view property) {
        return property == name ? sd_bus_message_read(message, "v", "b", &value) : 0;
    });
    return result < 0 || value < 0 ? std::nullopt : std::optional(value != 0);
}

std::optional<std::string> readText(sd_bus_message* message, std::string_view name) {
    const char* value = nullptr;
    const int result = forEachEntry(message, "{sv}", [&](std::string_view entry) {
        return entry == name ? sd_bus_message_read(message, "v", "s", &value) : 0;
    });
    return result < 0 || value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

}  // namespace kovra
