#pragma once

#include <cstddef>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace bench {

// Returns names like those of products on sale: in several languages, unsorted, and the same in every run.
inline std::vector<std::string> deviceNames(std::size_t count) {
    constexpr std::string_view kinds[] = {"Wireless", "Bluetooth", "USB",          "Optical",   "Compact", "Ergonomic",
                                          "compact",  "Gaming",    "Беспроводная", "Kabellose", "Souris",  "Ratón"};
    constexpr std::string_view things[] = {"Mouse", "Trackball", "Receiver", "Keyboard", "мышь",   "Tastatur",
                                           "Combo", "óptico",    "mouse",    "Dongle",   "Tablet", "sans fil"};
    std::mt19937 random(20);
    const auto below = [&](std::size_t limit) { return static_cast<std::size_t>(random()) % limit; };
    std::vector<std::string> names;
    names.reserve(count);
    while (names.size() < count) {
        std::string name(kinds[below(std::size(kinds))]);
        name.append(" ").append(things[below(std::size(things))]).append(" ");
        name += static_cast<char>('A' + below(26));
        names.push_back(name + std::to_string(below(10000)));
    }
    return names;
}

}  // namespace bench
