#pragma once

#include <cstdlib>
#include <initializer_list>
#include <map>
#include <optional>
#include <string>

namespace kovra {

// Changes environment variables for a test. The destructor restores their previous values.
class Environment {
  public:
    Environment() = default;
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;
    ~Environment() {
        for (const auto& [name, value] : before_) put(name, value);
    }

    void set(const std::string& name, const std::string& value) { change(name, value); }
    void unset(std::initializer_list<std::string> names) {
        for (const std::string& name : names) change(name, std::nullopt);
    }

  private:
    void change(const std::string& name, const std::optional<std::string>& value) {
        const char* old = std::getenv(name.c_str());
        before_.try_emplace(name, old == nullptr ? std::nullopt : std::optional<std::string>(old));
        put(name, value);
    }
    static void put(const std::string& name, const std::optional<std::string>& value) {
        if (value)
            ::setenv(name.c_str(), value->c_str(), 1);
        else
            ::unsetenv(name.c_str());
    }

    std::map<std::string, std::optional<std::string>> before_;
};

}  // namespace kovra
