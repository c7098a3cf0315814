#pragma once

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "tests/fuzz/Promise.h"

namespace kovra::fuzz {

// Whether each member of the first value is in the second one, with the same value. The second may have more.
inline bool isPartOf(const nlohmann::json& part, const nlohmann::json& whole) {
    if (part.is_array()) {
        return whole.is_array() && part.size() == whole.size() &&
               std::equal(part.begin(), part.end(), whole.begin(), isPartOf);
    }
    if (!part.is_object()) return part == whole;
    const auto items = part.items();
    return whole.is_object() && std::all_of(items.begin(), items.end(), [&](const auto& item) {
               return whole.contains(item.key()) && isPartOf(item.value(), whole[item.key()]);
           });
}

// What must hold for a line from the other process: if it is a message, the message can be sent on as one line that
// means the same.
template <typename Decode, typename Encode>
void checkLine(std::string_view line, Decode decode, Encode encode) {
    const auto message = decode(line);
    if (!message) return;
    const std::string sent = encode(*message);
    promise(sent.ends_with('\n') && std::ranges::count(sent, '\n') == 1, "a message is one line");
    // A number like 1E15 is written with all its digits, and an escaped character with up to six.
    promise(sent.size() <= 12 * line.size() + 200, "a message is not much longer than its line");
    const auto again = decode(std::string_view(sent).substr(0, sent.size() - 1));
    promise(again.has_value(), "what was sent can be read");
    promise(isPartOf(nlohmann::json::parse(sent), nlohmann::json::parse(line)),
            "nothing is sent that was not in the line");
    promise(again->index() == message->index() && encode(*again) == sent, "what was sent means the same");
}

}  // namespace kovra::fuzz
