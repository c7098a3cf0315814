#pragma once

#include <sys/stat.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>

#include "helper/Loop.h"
#include "helper/flag/FlagFolder.h"
#include "tests/helper/Users.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra::helper {

inline constexpr const char* folderPath = "/Library/Application Support/ble-kovra";

// An empty flag folder below a temporary root. handOver() and isOn() run without capabilities, like the daemon in its
// unit.
class FlagRig {
  public:
    explicit FlagRig(TempFolder::Where where = TempFolder::Where::memory) : root_(where) { makeFlagFolder(); }

    // Creates the missing folders of the flag's path, and makes all of its folders writable only by their owner.
    void makeFlagFolder() const {
        for (const char* name : {"", "Library", "Library/Application Support", "Library/Application Support/ble-kovra"})
            makeFolder(name);
    }
    void makeFolder(const std::string& name) const {
        const std::string path = root() + "/" + name;
        ::mkdir(path.c_str(), 0755);
        if (::chmod(path.c_str(), 0755) != 0) throw std::runtime_error("no folder " + path);
    }
    std::string root() const { return root_.path().string(); }
    std::string path() const { return root() + folderPath; }
    std::string path(const std::string& name) const { return path() + "/" + name; }
    std::string state() const { return path("state"); }
    std::string content(const std::string& name = "state") const { return readFile(path(name)); }
    std::set<std::string> names() const { return root_.names(std::string(folderPath).substr(1)); }
    Trust trust() const { return {root(), ::geteuid()}; }

    Loop& loop() { return loop_; }
    FlagFolder& folder() {
        if (!folder_) folder_ = FlagFolder::open(loop_, folderPath, trust());
        if (!folder_) throw std::runtime_error("the folder is refused");
        return *folder_;
    }
    // Closes the folder. The next use opens it again, as a restarted daemon does.
    void reopen() { folder_.reset(); }
    bool handOver(std::optional<uid_t> user) {
        FlagFolder& flag = folder();
        const WithoutCapabilities none;
        return flag.handOver(user);
    }
    bool isOn() {
        FlagFolder& flag = folder();
        const WithoutCapabilities none;
        return flag.isOn();
    }
    // Overwrites the flag in place, as the application does.
    void write(uid_t user, const std::string& text) const {
        const ActingAs writer(user);
        const Descriptor file(::open(state().c_str(), O_WRONLY | O_CLOEXEC));
        writeTo(file, text);
    }
    static void writeTo(const Descriptor& file, const std::string& text) {
        const bool written = ::pwrite(file.number(), text.data(), text.size(), 0) == static_cast<ssize_t>(text.size());
        if (!written || ::ftruncate(file.number(), static_cast<off_t>(text.size())) != 0) {
            throw std::runtime_error("cannot write " + text);
        }
    }

    // Runs the loop until the condition holds, for at most ten seconds.
    bool runUntil(const std::function<bool()>& condition) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (!condition() && std::chrono::steady_clock::now() < end) runFor(std::chrono::milliseconds(1));
        return condition();
    }
    void runFor(std::chrono::milliseconds time) {
        const auto over = loop_.after(time, [this] { loop_.stop(); });
        loop_.run();
    }

  private:
    TempFolder root_;
    Loop loop_;
    std::unique_ptr<FlagFolder> folder_;
};

}  // namespace kovra::helper
