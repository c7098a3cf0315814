#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kovra {

// The main group of a desktop entry file, as freedesktop.org has them (1.5). Whatever is no such line is passed
// over, and of a key that stands there twice the first counts.
class DesktopEntry {
  public:
    explicit DesktopEntry(std::string_view text);

    std::optional<std::string> string(const std::string& key) const;
    // Absent, or neither "true" nor "false": nothing.
    std::optional<bool> boolean(const std::string& key) const;
    // Empty where the key is absent.
    std::vector<std::string> list(const std::string& key) const;
    // The program that Exec names, its quoting taken off; nothing where there is none.
    std::optional<std::string> program() const;

  private:
    std::map<std::string, std::string> values_;  // as they stand in the file
};

}  // namespace kovra
