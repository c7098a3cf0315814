// A line from the window process, as the resident program reads it.
#include <cstddef>
#include <cstdint>

#include "BLE_kovra/platform/linux/wire/Encoding.h"
#include "tests/fuzz/WireFuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kovra::fuzz::checkLine(kovra::fuzz::textOf(data, size), kovra::decodeToResident,
                           [](const kovra::ToResident& message) { return kovra::encode(message); });
    return 0;
}
