#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace kovra::fuzz {

// Ends the process if a promise does not hold. libFuzzer reports that as a crash, and keeps the input.
inline void promise(bool holds, std::string_view what) {
    if (holds) return;
    std::fprintf(stderr, "\nbroken promise: %.*s\n", static_cast<int>(what.size()), what.data());
    std::abort();
}

inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

// Calls `visit` with each line of the text, without its line feed. A text that ends in a line feed has no further line.
template <typename Visit>
void forEachLine(std::string_view text, Visit visit) {
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        visit(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
}

}  // namespace kovra::fuzz
