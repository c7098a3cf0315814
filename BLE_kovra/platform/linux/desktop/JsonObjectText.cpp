#include "BLE_kovra/platform/linux/desktop/JsonObjectText.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace kovra {

namespace {

constexpr std::string_view blanks = " \t\r\n";

// Returns the index after the quoted text that starts at `begin`, or the end of the text if the closing quote is
// missing.
std::size_t pastQuoted(std::string_view text, std::size_t begin) {
    std::size_t i = begin + 1;
    while (i < text.size() && text[i] != '"') i += text[i] == '\\' ? 2 : 1;
    return std::min(i + 1, text.size());
}

// Calls `visit` with the index of each bracket, brace, comma and colon outside quotes, and of each opening quote.
template <typename Visit>
void forEachMark(std::string_view text, Visit visit) {
    for (std::size_t i = text.find_first_of("{}[]:,\""); i < text.size(); i = text.find_first_of("{}[]:,\"", i)) {
        visit(i);
        i = text[i] == '"' ? pastQuoted(text, i) : i + 1;
    }
}

bool opens(char c) { return c == '{' || c == '['; }
bool closes(char c) { return c == '}' || c == ']'; }

// The range of a value in the text. Both ends are 0 if the text has no such value.
struct Span {
    std::size_t begin = 0;
    std::size_t end = 0;
};

struct Members {
    Span wanted;
    Span last;
};

Members findMembers(std::string_view object, const nlohmann::json& key) {
    Members found;
    std::size_t depth = 0, keyBegin = 0, valueBegin = 0;
    forEachMark(object, [&](std::size_t i) {
        const char c = object[i];
        if (c == '"' && depth == 1 && valueBegin == 0) keyBegin = i;
        if (c == ':' && depth == 1) valueBegin = object.find_first_not_of(blanks, i + 1);
        if (closes(c)) --depth;
        if (valueBegin != 0 && ((c == ',' && depth == 1) || depth == 0)) {
            found.last = {valueBegin, object.find_last_not_of(blanks, i - 1) + 1};
            const auto quoted = object.substr(keyBegin, pastQuoted(object, keyBegin) - keyBegin);
            if (nlohmann::json::parse(quoted) == key) found.wanted = found.last;
            valueBegin = 0;
        }
        if (opens(c)) ++depth;
    });
    return found;
}

}  // namespace

bool isNestedDeeperThan(std::size_t limit, std::string_view text) {
    std::size_t depth = 0, deepest = 0;
    forEachMark(text, [&](std::size_t i) {
        if (opens(text[i])) deepest = std::max(deepest, ++depth);
        if (closes(text[i]) && depth > 0) --depth;
    });
    return deepest > limit;
}

std::string withMember(std::string_view object, std::string_view key, std::string_view value) {
    const Members members = findMembers(object, nlohmann::json::parse(key));
    std::string text(object);
    if (members.wanted.end != 0) {
        return text.replace(members.wanted.begin, members.wanted.end - members.wanted.begin, value);
    }
    std::string member = "\n  ";
    member.append(key).append(": ").append(value);
    if (members.last.end != 0) return text.insert(members.last.end, "," + member);
    return text.insert(text.find('{') + 1, member + "\n");
}

}  // namespace kovra
