// A line from the resident program, as the window process reads it.
#include <cstddef>
#include <cstdint>

#include "BLE_kovra/platform/linux/wire/Encoding.h"
#include "tests/fuzz/WireFuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kovra::fuzz::checkLine(kovra::fuzz::textOf(data, size), kovra::decodeToWindow,
                           [](const kovra::ToWindow& message) { return kovra::encode(message); });
    return 0;
}
