#pragma once

#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

#include <cstdint>
#include <string>

namespace kovra {

// Returns the unread part of a message as text: numbers and paths unchanged, strings in quotes, [arrays], (structs),
// key:value, and a variant as its value. For a byte array, the text contains only its size.
inline std::string textOf(sd_bus_message* message) {
    std::string text;
    const auto separate = [&] {
        if (!text.empty()) text += ' ';
    };
    char type = 0;
    const char* contents = nullptr;
    while (sd_bus_message_peek_type(message, &type, &contents) > 0) {
        separate();
        switch (type) {
            case SD_BUS_TYPE_ARRAY:
                if (std::string(contents) == "y") {
                    const void* bytes = nullptr;
                    std::size_t size = 0;
                    EXPECT_GE(sd_bus_message_read_array(message, 'y', &bytes, &size), 0);
                    text += std::to_string(size) + " bytes";
                    break;
                }
                [[fallthrough]];
            case SD_BUS_TYPE_STRUCT:
            case SD_BUS_TYPE_DICT_ENTRY:
            case SD_BUS_TYPE_VARIANT: {
                EXPECT_GE(sd_bus_message_enter_container(message, type, contents), 0);
                std::string inside = textOf(message);
                if (type == SD_BUS_TYPE_ARRAY) inside = "[" + inside + "]";
                if (type == SD_BUS_TYPE_STRUCT) inside = "(" + inside + ")";
                if (type == SD_BUS_TYPE_DICT_ENTRY) inside.replace(inside.find(' '), 1, ":");
                text += inside;
                EXPECT_GE(sd_bus_message_exit_container(message), 0);
                break;
            }
            case SD_BUS_TYPE_STRING:
            case SD_BUS_TYPE_OBJECT_PATH:
            case SD_BUS_TYPE_SIGNATURE: {
                const char* value = nullptr;
                EXPECT_GE(sd_bus_message_read_basic(message, type, &value), 0);
                text += type == SD_BUS_TYPE_STRING ? '"' + std::string(value) + '"' : value;
                break;
            }
            case SD_BUS_TYPE_BOOLEAN: {
                int value = 0;
                EXPECT_GE(sd_bus_message_read_basic(message, type, &value), 0);
                text += value != 0 ? "yes" : "no";
                break;
            }
            case SD_BUS_TYPE_INT32: {
                std::int32_t value = 0;
                EXPECT_GE(sd_bus_message_read_basic(message, type, &value), 0);
                text += std::to_string(value);
                break;
            }
            case SD_BUS_TYPE_UINT32: {
                std::uint32_t value = 0;
                EXPECT_GE(sd_bus_message_read_basic(message, type, &value), 0);
                text += std::to_string(value);
                break;
            }
            default:
                ADD_FAILURE() << "a type that no answer has: " << type;
                return text;
        }
    }
    return text;
}

}  // namespace kovra
