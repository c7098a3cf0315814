// A line from the window process, as the resident program reads it.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "BLE_kovra/platform/linux/wire/Encoding.h"
#include "tests/fuzz/WireFuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view line = kovra::fuzz::textOf(data, size);
    kovra::fuzz::checkLine(line, kovra::decodeToResident,
                           [](const kovra::ToResident& message) { return kovra::encode(message); });
    const auto message = kovra::decodeToResident(line);
    if (message) kovra::fuzz::promise(kovra::decodeToResident(kovra::encode(*message)) == message, "nothing is lost");
    return 0;
}
