#pragma once

#include <algorithm>
#include <cctype>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "BLE_kovra/platform/Application.h"
#include "BLE_kovra/platform/FileSystem.h"
#include "BLE_kovra/platform/Locale.h"
#include "BLE_kovra/platform/PreferencesStore.h"
#include "BLE_kovra/platform/SystemLog.h"

namespace kovra {

class FakeLog : public SystemLog {
  public:
    void log(std::string_view line) override { lines.emplace_back(line); }

    std::vector<std::string> lines;
};

// Files in memory. Every attempt to write is recorded, also one that fails.
class FakeFileSystem : public FileSystem {
  public:
    struct Write {
        std::string path;
        std::string text;
        bool succeeded;
    };

    Outcome writeWholeFile(const std::string& path, std::string_view text) override {
        const std::optional<std::string> reason = reasonToFail();
        writes.push_back({path, std::string(text), !reason});
        if (reason) return Outcome::failure(*reason);
        contents[path] = text;
        return Outcome::success();
    }

    void failNext(std::string reason) { failures_.push_back(std::move(reason)); }
    void failAlways(std::optional<std::string> reason) { always_ = std::move(reason); }

    std::map<std::string, std::string> contents;
    std::vector<Write> writes;

  private:
    std::optional<std::string> reasonToFail() {
        if (failures_.empty()) return always_;
        std::string reason = failures_.front();
        failures_.erase(failures_.begin());
        return reason;
    }

    std::vector<std::string> failures_;
    std::optional<std::string> always_;
};

// Preferences in memory, typed as they were stored. Every save is recorded.
class FakePreferences : public PreferencesStore {
  public:
    struct Save {
        std::string key;
        PreferenceValue value;
    };

    std::optional<PreferenceValue> object(std::string_view key) const override {
        const auto found = stored.find(key);
        return found == stored.end() ? std::nullopt : std::optional(found->second);
    }
    bool boolean(std::string_view key) const override {
        const auto value = object(key);
        if (!value) return false;
        if (const auto* truth = std::get_if<bool>(&*value)) return *truth;
        if (const auto* number = std::get_if<double>(&*value)) return *number != 0;
        if (const auto* text = std::get_if<std::string>(&*value)) return readAsBoolean(*text);
        return false;
    }
    void set(std::string_view key, const PreferenceValue& value) override {
        stored.insert_or_assign(std::string(key), value);
        saves.push_back({std::string(key), value});
    }

    std::size_t savesOf(std::string_view key) const {
        return static_cast<std::size_t>(std::ranges::count(saves, key, &Save::key));
    }

    std::map<std::string, PreferenceValue, std::less<>> stored;
    std::vector<Save> saves;

  private:
    static bool readAsBoolean(std::string_view text) {
        const auto skip = [&](auto matches, std::size_t atMost) {
            while (atMost-- > 0 && !text.empty() && matches(text.front())) text.remove_prefix(1);
        };
        skip([](char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }, text.size());
        skip([](char c) { return c == '+' || c == '-'; }, 1);
        skip([](char c) { return c == '0'; }, text.size());
        return !text.empty() && std::string_view("YyTt123456789").find(text.front()) != std::string_view::npos;
    }
};

// A user who prefers these languages and orders names letter by letter, A to Z before all other letters, whatever their
// case.
class FakeLocale : public Locale {
  public:
    explicit FakeLocale(std::vector<std::string> preferred = {"en-GB"}) : languages(std::move(preferred)) {}

    std::vector<std::string> preferredLanguages() const override { return languages; }
    std::string sortKey(std::string_view name) const override {
        ++sortKeysMade;
        std::string key(name);
        for (char& c : key) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        return key;
    }
    bool isAscending(const std::string& firstKey, const std::string& secondKey) const override {
        return firstKey < secondKey;
    }

    std::vector<std::string> languages;
    mutable int sortKeysMade = 0;
};

// An application without a desktop: run() tells the delegate that it has launched and returns, the test goes on from
// there.
class FakeApplication : public Application {
  public:
    void run(ApplicationDelegate& delegate) override {
        delegate_ = &delegate;
        delegate.applicationDidFinishLaunching();
    }
    void setActivationPolicy(ActivationPolicy policy) override { policies.push_back(policy); }
    void terminate() override {
        if (terminated) return;
        terminated = true;
        if (onTerminating) onTerminating();
        if (delegate_ != nullptr) delegate_->applicationWillTerminate();
    }
    void beep() override { ++beeps; }

    std::vector<ActivationPolicy> policies;
    std::function<void()> onTerminating;  // where a test stops its queue
    bool terminated = false;
    int beeps = 0;

  private:
    ApplicationDelegate* delegate_ = nullptr;
};

}  // namespace kovra
