#include "BLE_kovra/platform/linux/DesktopEntry.h"

namespace kovra {

namespace {

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r";
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// What a backslash and the character after it stand for.
std::string unescaped(char escaped) {
    switch (escaped) {
        case 's':
            return " ";
        case 'n':
            return "\n";
        case 't':
            return "\t";
        case 'r':
            return "\r";
        case '\\':
            return "\\";
        default:
            return {'\\', escaped};
    }
}

}  // namespace

DesktopEntry::DesktopEntry(std::string_view text) {
    bool inMainGroup = false;
    while (!text.empty()) {
        const auto end = text.find('\n');
        const std::string_view line = trimmed(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        if (line.starts_with('[')) {
            inMainGroup = line == "[Desktop Entry]";
        } else if (const auto equals = line.find('=');
                   inMainGroup && !line.starts_with('#') && equals != std::string_view::npos) {
            values_.try_emplace(std::string(trimmed(line.substr(0, equals))), trimmed(line.substr(equals + 1)));
        }
    }
}

std::optional<std::string> DesktopEntry::string(const std::string& key) const {
    const auto found = values_.find(key);
    if (found == values_.end()) return std::nullopt;
    std::string text;
    for (std::size_t i = 0; i < found->second.size(); ++i) {
        if (found->second[i] == '\\' && i + 1 < found->second.size())
            text += unescaped(found->second[++i]);
        else
            text += found->second[i];
    }
    return text;
}

std::optional<bool> DesktopEntry::boolean(const std::string& key) const {
    const auto value = string(key);
    if (value == "true") return true;
    if (value == "false") return false;
    return std::nullopt;
}

std::vector<std::string> DesktopEntry::list(const std::string& key) const {
    std::vector<std::string> entries;
    std::string entry;
    for (const char c : string(key).value_or("")) {
        if (c != ';') {
            entry += c;
        } else if (!entry.empty()) {
            entries.push_back(std::move(entry));
            entry.clear();
        }
    }
    if (!entry.empty()) entries.push_back(std::move(entry));
    return entries;
}

std::optional<std::string> DesktopEntry::program() const {
    const std::string line = string("Exec").value_or("");
    const bool isQuoted = line.starts_with('"');
    std::string program;
    for (std::size_t i = isQuoted ? 1 : 0; i < line.size(); ++i) {
        if (line[i] == (isQuoted ? '"' : ' ')) break;
        if (isQuoted && line[i] == '\\' && i + 1 < line.size()) ++i;
        program += line[i];
    }
    if (program.empty()) return std::nullopt;
    return program;
}

}  // namespace kovra
