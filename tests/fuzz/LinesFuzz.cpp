#include <fuzzer/FuzzedDataProvider.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "BLE_kovra/platform/linux/wire/LineReader.h"
#include "tests/fuzz/Promise.h"

// A stream between the two processes that arrives in pieces of any length.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kovra;
    FuzzedDataProvider input(data, size);
    const std::size_t longest = input.ConsumeIntegralInRange<std::size_t>(0, 40);
    LineReader reader(longest);
    std::string stream;
    std::vector<std::string> lines;
    while (input.remaining_bytes() > 0) {
        const std::size_t length = input.ConsumeIntegralInRange<std::size_t>(0, 20);
        const std::string piece = input.ConsumeBytesAsString(length);
        stream += piece;
        for (std::string& line : reader.feed(piece)) lines.push_back(std::move(line));
    }

    std::vector<std::string> expected;
    std::string_view rest = stream;
    for (std::size_t end = rest.find('\n'); end != std::string_view::npos; end = rest.find('\n')) {
        if (end <= longest) expected.emplace_back(rest.substr(0, end));
        rest.remove_prefix(end + 1);
    }
    fuzz::promise(lines == expected, "each complete line arrives once and in order, and none is too long");
    return 0;
}
