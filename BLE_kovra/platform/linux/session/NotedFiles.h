#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kovra {

// The states of some files at one time. It can be asked without waiting for a disk whether the files have changed.
class NotedFiles {
  public:
    // The real-time clock, as the kernel sets the times of files by it.
    static std::chrono::nanoseconds realTime();

    explicit NotedFiles(std::function<std::chrono::nanoseconds()> now = realTime) : now_(std::move(now)) {}

    // Adds the file at this path, or that there is none. May wait for the disk.
    void note(const std::string& path);

    // Returns whether no file has changed since it was noted. Asks only for what the kernel has in memory, so it never
    // waits. Returns false if that is not enough for an answer, as on network file systems, or nothing was noted.
    bool areUnchanged() const;

  private:
    struct State {
        unsigned deviceMajor = 0;
        unsigned deviceMinor = 0;
        unsigned long long inode = 0;
        unsigned long long size = 0;
        std::chrono::nanoseconds changed{0};  // also when its permissions or its number of links changed
        bool operator==(const State&) const = default;
    };
    struct File {
        std::string path;
        std::optional<State> state;  // none if the file does not exist
    };
    enum class Lookup { anywhere, inMemory };

    static int look(const std::string& path, Lookup lookup, std::optional<State>& state);

    std::function<std::chrono::nanoseconds()> now_;
    std::vector<File> files_;
    bool areReliable_ = true;  // whether a further change would be seen in the state of each file
};

}  // namespace kovra
