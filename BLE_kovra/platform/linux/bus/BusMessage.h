#pragma once

#include <systemd/sd-bus.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "BLE_kovra/platform/linux/loop/Handles.h"

namespace kovra {

using BusHandle = Handle<sd_bus, sd_bus_close_unref>;
using BusSlot = Handle<sd_bus_slot, sd_bus_slot_unref>;
using BusMessage = Handle<sd_bus_message, sd_bus_message_unref>;

// A writer that appends values to a message. After the first failure it writes nothing more. result() then returns that
// failure, as the negative error number that sd-bus expects from a handler.
class BusWriter {
  public:
    explicit BusWriter(sd_bus_message* message) : message_(message) {}

    BusWriter& boolean(bool value);
    BusWriter& integer(std::int32_t value);
    BusWriter& natural(std::uint32_t value);
    // Bytes that are not valid UTF-8 are replaced by U+FFFD.
    BusWriter& text(std::string_view value);
    BusWriter& path(const char* value);
    BusWriter& bytes(const std::vector<std::uint8_t>& value);

    // Values that are written before the matching close() are inside the container.
    BusWriter& openArray(const char* of) { return open(SD_BUS_TYPE_ARRAY, of); }
    BusWriter& openStruct(const char* of) { return open(SD_BUS_TYPE_STRUCT, of); }
    BusWriter& openEntry(const char* of) { return open(SD_BUS_TYPE_DICT_ENTRY, of); }
    BusWriter& openVariant(const char* of) { return open(SD_BUS_TYPE_VARIANT, of); }
    BusWriter& close();
    // Writes an entry with a string value into an array of type a{sv}.
    BusWriter& entry(std::string_view key, std::string_view value) {
        return openEntry("sv").text(key).openVariant("s").text(value).close().close();
    }

    int result() const { return result_; }

  private:
    BusWriter& open(char kind, const char* of);
    BusWriter& append(char type, const void* value);

    sd_bus_message* message_;
    int result_ = 0;
};

// Reads the next value of the message, which must be an array of dictionary entries. For each key, `take` reads the
// value and returns a positive number, or returns 0 to skip the value. A negative error number from `take` ends the
// reading. Returns 1 if all entries were read, otherwise a negative error number.
template <typename Take>
int forEachEntry(sd_bus_message* message, const char* entries, Take take) {
    int result = sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, entries);
    if (result <= 0) return result < 0 ? result : -ENXIO;
    const std::string entry(entries + 1, std::strlen(entries) - 2);
    while ((result = sd_bus_message_enter_container(message, SD_BUS_TYPE_DICT_ENTRY, entry.c_str())) > 0) {
        const char* key = nullptr;
        result = sd_bus_message_read_basic(message, entry.front(), static_cast<void*>(&key));
        if (result >= 0) result = take(std::string_view(key));
        if (result == 0) result = sd_bus_message_skip(message, entry.c_str() + 1);
        if (result >= 0) result = sd_bus_message_exit_container(message);
        if (result < 0) return result;
    }
    if (result >= 0) result = sd_bus_message_exit_container(message);
    return result < 0 ? result : 1;
}

// Reads the next value of the message, which must be an a{sv}, and returns the value of its entry with this name.
// Returns nullopt if there is no entry with this name and type, or if the message has a different signature.
std::optional<bool> readBoolean(sd_bus_message* message, std::string_view name);
std::optional<std::string> readText(sd_bus_message* message, std::string_view name);

// Replies to a call if its sender expects a reply. `write` writes the values of the reply. The handler of the call must
// return the result of this function.
template <typename Write>
int answer(sd_bus_message* call, Write write) {
    if (sd_bus_message_get_expect_reply(call) <= 0) return 1;
    sd_bus_message* made = nullptr;
    int result = sd_bus_message_new_method_return(call, &made);
    const BusMessage reply(made);
    if (result < 0) return result;
    BusWriter writer(made);
    write(writer);
    result = writer.result();
    if (result >= 0) result = sd_bus_send(nullptr, made, nullptr);
    return result < 0 ? result : 1;
}

}  // namespace kovra
