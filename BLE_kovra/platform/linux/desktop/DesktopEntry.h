#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kovra {

// A file in the freedesktop.org desktop entry format (1.5), with access to the lines of its main group. Lines that
// cannot be parsed are ignored, but text() preserves them. If a key occurs twice, the first occurrence counts.
class DesktopEntry {
  public:
    explicit DesktopEntry(std::string_view text);

    bool hasMainGroup() const;
    std::optional<std::string> string(const std::string& key) const;
    // Returns nullopt if the key is absent, or if its value is neither "true" nor "false".
    std::optional<bool> boolean(const std::string& key) const;
    // Returns an empty list if the key is absent.
    std::vector<std::string> list(const std::string& key) const;
    // Returns the program in the value of the key Exec, unquoted. Returns nullopt if there is none.
    std::optional<std::string> program() const;

    // Replaces the first line with this key and removes all other lines with it. If no line has this key, appends a
    // line to the main group. Does nothing if there is no main group.
    void set(const std::string& key, std::string_view value);
    void setProgram(std::string_view path);
    void remove(const std::string& key);
    // Returns the contents of the file, including all changes.
    std::string text() const;

  private:
    struct Line {
        std::string text;
        bool isInMainGroup = false;
        std::string key;    // empty if the line has no key or is not in the main group
        std::string value;  // still escaped
    };
    std::vector<Line> lines_;
};

}  // namespace kovra
