#pragma once

#include <sys/types.h>
#include <unistd.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "helper/BootTime.h"
#include "helper/Descriptor.h"
#include "helper/Loop.h"
#include "helper/PacedWatch.h"
#include "helper/flag/LeftFiles.h"
#include "helper/flag/WordCheck.h"

namespace kovra::helper {

// The folder below which a path is resolved, and the user who must own the path's last folder and the flag (see
// openTrustedPath()). Tests use another root.
struct Trust {
    std::string root = "/";
    uid_t owner = ::geteuid();
};

// The folder of the flag file "state". It reports whose flag that is and what it says, and hands it over to another
// user.
//
// The folder is held open by a descriptor. Its path is looked up again only to find out whether the folder is lost. The
// entries in the folder are opened through the descriptor, without following links or blocking, and only a few bytes of
// each are read. No capability is needed, because the folder and its files belong to the caller.
//
// Other users can cause events without end: the user at the machine by writing the flag, anyone by touching a neighbor
// of the path such as /tmp. So events are read at most ten times in a row, and then 20 times a second. No event is
// lost, but reading it may be delayed by up to 50 ms.
class FlagFolder {
  public:
    // Opens the folder at this absolute path and removes what an interrupted hand-over has left. Returns null, and logs
    // one line, if the folder is missing, cannot be watched or is not trusted (see openTrustedPath()). Throws like
    // Loop::onReadable().
    static std::unique_ptr<FlagFolder> open(Loop& loop, const std::string& path, const Trust& trust = {});

    FlagFolder(const FlagFolder&) = delete;
    FlagFolder& operator=(const FlagFolder&) = delete;

    // Gives the flag's name to a file that this user alone, or no user, can write besides the owner. That is the file
    // that was this user's flag before, or else a new one that says "off". What the user has last written counts: "on"
    // is kept, and anything else becomes "off". The previous user can no longer write the flag, not even through an
    // open descriptor. What that user has written is kept for their return, if the disk has room for a second hard
    // link.
    //
    // Returns false, and logs one line, if that fails; no incomplete file is left. In most cases no user can write the
    // flag then. If the previous user's right could not be revoked, the flag is still theirs. If the new flag cannot be
    // watched, it counts as "off". The caller mutes nothing, and tries again later.
    bool handOver(std::optional<uid_t> user);
    // Whether the flag is as handOver() leaves it: this user alone, or no user, can write it, and it is watched.
    bool isFlagOf(std::optional<uid_t> user) const;
    // Whether the flag is a regular file of the owner with exactly the two bytes "on", and has no other hard link in
    // the folder. A flag that cannot be watched counts as "off", because a later "off" would go unnoticed. So does one
    // on a read-only disk, because "off" could not be written. A word that was written before `since`, the start of the
    // application, counts as "off" too: an earlier application that was killed has left it.
    bool isOn(BootTime since = BootTime::zero());

    // Called when the flag may have changed or was replaced, including by handOver().
    std::function<void()> onChange;
    // Called once, when a folder of the path was moved, removed or is not trusted any more. The folder is no longer
    // watched, and its flag no longer counts.
    std::function<void()> onLost;

  private:
    FlagFolder(Loop& loop, std::string path, Trust trust)
        : loop_(loop), path_(std::move(path)), trust_(std::move(trust)) {}

    bool watch();
    bool isWritableBy(std::optional<uid_t> user) const;
    // Watches the file that has the flag's name now, instead of any earlier file. Returns 0 or an error number.
    int watchFlag();
    struct Changes;

    void receiveEvents();
    // Reads one buffer of waiting events, and adds what they say to `changes`. Returns whether there may be more of
    // them.
    bool readEvents(Changes& changes) const;
    bool isLost() const;

    Loop& loop_;
    const std::string path_;
    const Trust trust_;
    Descriptor folder_;
    Descriptor events_;
    std::unique_ptr<PacedWatch> watch_;
    std::map<int, std::string> nextNames_;  // by watch descriptor of a folder above: the path's next name
    int folderWd_ = -1;
    int flagWd_ = -1;
    std::unique_ptr<LeftFilesWatch> leftFiles_;
    WordCheck word_;
    bool isFlagWatched_ = false;  // also true if there is no flag that could be watched
};

}  // namespace kovra::helper
