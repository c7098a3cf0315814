#pragma once

#include <algorithm>
#include <string>
#include <string_view>

#include "tests/fuzz/Promise.h"

namespace kovra::fuzz {

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
    promise(again->index() == message->index() && encode(*again) == sent, "what was sent means the same");
}

}  // namespace kovra::fuzz
