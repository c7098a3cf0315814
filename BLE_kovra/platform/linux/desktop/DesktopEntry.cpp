#include "BLE_kovra/platform/linux/desktop/DesktopEntry.h"

#include <algorithm>
#include <utility>

namespace kovra {

namespace {

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r";
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// Returns the text that a backslash and the following character stand for.
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

std::string escaped(std::string_view text) {
    constexpr std::string_view special = "\\\n\t\r", letters = "\\ntr";
    std::string escaped;
    for (const char c : text) {
        if (const auto at = special.find(c); at != std::string_view::npos)
            escaped += {'\\', letters[at]};
        else
            escaped += c;
    }
    return escaped;
}

// Returns the path as a value of the key Exec, quoted if necessary.
std::string quoted(std::string_view path) {
    constexpr std::string_view harmless = "/._-+0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
    if (path.find_first_not_of(harmless) == std::string_view::npos) return std::string(path);
    std::string quoted = "\"";
    for (const char c : path) {
        if (c == '"' || c == '`' || c == '$' || c == '\\') quoted += '\\';
        if (c == '%') quoted += '%';  // a single % starts a field code
        quoted += c;
    }
    return quoted + '"';
}

}  // namespace

DesktopEntry::DesktopEntry(std::string_view text) {
    bool inMainGroup = false;
    while (!text.empty()) {
        const auto end = text.find('\n');
        Line line;
        line.text = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        const std::string_view content = trimmed(line.text);
        if (content.starts_with('[')) {
            inMainGroup = content == "[Desktop Entry]";
        } else if (const auto equals = content.find('=');
                   inMainGroup && !content.starts_with('#') && equals != std::string_view::npos) {
            line.key = trimmed(content.substr(0, equals));
            line.value = trimmed(content.substr(equals + 1));
        }
        line.isInMainGroup = inMainGroup;
        lines_.push_back(std::move(line));
    }
}

bool DesktopEntry::hasMainGroup() const { return std::ranges::any_of(lines_, &Line::isInMainGroup); }

std::optional<std::string> DesktopEntry::string(const std::string& key) const {
    const auto found = std::ranges::find(lines_, key, &Line::key);
    if (key.empty() || found == lines_.end()) return std::nullopt;
    std::string text;
    for (std::size_t i = 0; i < found->value.size(); ++i) {
        if (found->value[i] == '\\' && i + 1 < found->value.size())
            text += unescaped(found->value[++i]);
        else
            text += found->value[i];
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
        if (line[i] == '%' && i + 1 < line.size() && line[i + 1] == '%') ++i;
        program += line[i];
    }
    if (program.empty()) return std::nullopt;
    return program;
}

void DesktopEntry::set(const std::string& key, std::string_view value) {
    Line line{key + '=' + escaped(value), true, key, escaped(value)};
    const auto found = std::ranges::find(lines_, key, &Line::key);
    if (found != lines_.end()) {
        *found = std::move(line);
        lines_.erase(std::remove_if(found + 1, lines_.end(), [&](const Line& each) { return each.key == key; }),
                     lines_.end());
        return;
    }
    // Insert before the blank lines that separate this group from the next.
    const auto last = std::find_if(lines_.rbegin(), lines_.rend(),
                                   [](const Line& each) { return each.isInMainGroup && !trimmed(each.text).empty(); });
    if (last != lines_.rend()) lines_.insert(last.base(), std::move(line));
}

void DesktopEntry::setProgram(std::string_view path) { set("Exec", quoted(path)); }

void DesktopEntry::remove(const std::string& key) {
    std::erase_if(lines_, [&](const Line& line) { return line.key == key; });
}

std::string DesktopEntry::text() const {
    std::string text;
    for (const Line& line : lines_) text += line.text + '\n';
    return text;
}

}  // namespace kovra
