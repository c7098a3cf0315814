#pragma once

#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "helper/Descriptor.h"
#include "helper/Loop.h"

namespace kovra::helper {

// Where the way to a folder starts, and whose every folder on it has to be: the root of the file system and its owner;
// tests have smaller ones.
struct Trust {
    std::filesystem::path start = "/";
    uid_t owner = 0;
};

// The folder of the flag "state": whose flag is in place, what it says, and putting another user's in its place.
//
// The folder is held by a descriptor and is never looked up by its name again. Nothing in it is followed, waited for,
// or read beyond a few bytes, whatever it is. Works without any capability, as the folder and the files in it are the
// caller's own.
class FlagFolder {
  public:
    // The folder at this absolute path, where what an interrupted hand-over has left is cleared away. Null, and one
    // line in the log, where it is missing, or where it or a folder on the way is a link, belongs to somebody else or
    // may be written by anybody else.
    static std::unique_ptr<FlagFolder> open(Loop& loop, const std::filesystem::path& path, const Trust& trust = {});

    FlagFolder(const FlagFolder&) = delete;
    FlagFolder& operator=(const FlagFolder&) = delete;

    // Puts a new file in place, which this user alone may write, or nobody, with the text that this user last left,
    // else "off". Whoever could write the one before keeps no way to the new one, open descriptors included; what they
    // wrote is kept for their return. False, and one line in the log, where that failed: then the flag in place is
    // nobody's any more, or cannot be watched and says off, nothing half made is left, and the caller tries again
    // later.
    bool handOver(std::optional<uid_t> user);
    // Whether the flag in place may be written by exactly this user, or by nobody, and is watched; as handOver() would
    // have left it.
    bool isOf(std::optional<uid_t> user) const;
    // Whether the flag in place is a plain file of the owner's with one name and exactly the two bytes "on". Where the
    // kernel has no watch left for it the flag says off: nobody would hear when it does.
    bool saysOn() const;

    // The flag may have come to say something else, or is another one. Also called after one's own hand-over.
    std::function<void()> onChange;
    // The folder was moved, removed or opened to others: what it says no longer counts. Called once.
    std::function<void()> onLost;

  private:
    FlagFolder(std::filesystem::path path, Trust trust) : path_(std::move(path)), trust_(std::move(trust)) {}

    bool hold(Loop& loop);
    bool isWritableBy(std::optional<uid_t> user) const;
    // Watches what stands under the flag's name now, and nothing that stood there before. 0, or the error.
    int watchFlag();
    void happened();
    bool isLost() const;

    const std::filesystem::path path_;
    const Trust trust_;
    Descriptor folder_;
    Descriptor events_;
    std::unique_ptr<Loop::Watch> watch_;
    int folderMark_ = -1;
    int flagMark_ = -1;
    bool isWatched_ = false;  // also where there is nothing to watch
};

}  // namespace kovra::helper
