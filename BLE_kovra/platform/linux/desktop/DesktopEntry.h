#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kovra {

// A desktop entry file, as freedesktop.org has them (1.5), by the lines of its main group. Whatever is no such line is
// passed over and kept as it is, and of a key that stands there twice the first counts.
class DesktopEntry {
  public:
    explicit DesktopEntry(std::string_view text);

    bool hasMainGroup() const;
    std::optional<std::string> string(const std::string& key) const;
    // Absent, or neither "true" nor "false": nothing.
    std::optional<bool> boolean(const std::string& key) const;
    // Empty where the key is absent.
    std::vector<std::string> list(const std::string& key) const;
    // The program that Exec names, its quoting taken off; nothing where there is none.
    std::optional<std::string> program() const;

    // Where there is a main group: in place of the key's first line, or else as the last line of the group.
    void set(const std::string& key, std::string_view value);
    void setProgram(std::string_view path);
    void remove(const std::string& key);
    // The file with these changes.
    std::string text() const;

  private:
    struct Line {
        std::string text;
        bool isInMainGroup = false;
        std::string key;    // empty where the line has none
        std::string value;  // as it stands in the file
    };
    std::vector<Line> lines_;
};

}  // namespace kovra
