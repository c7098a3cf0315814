#pragma once

#include <set>
#include <string>
#include <string_view>

#include "helper/Descriptor.h"

namespace kovra::helper {

// A persistent list of the input devices that this program has muted or is about to mute.
//
// Each device is an empty file, such as "pads/input17", in the runtime folder. The list therefore survives the process,
// and any later process can unmute the devices. The kernel does not reuse a number before the next boot, and the folder
// is empty at boot.
//
// One process at a time holds the list, by a lock on the folder. Otherwise a second process could unmute what the first
// one has muted, or remove an entry of a device that the first one is about to mute. The folder is closed to other
// users, so that they cannot lock it.
class MutedPads {
  public:
    enum class IfMissing { create, fail };

    // Reads the list, even if another process holds it. Other files in the folder are ignored. Logs a line if the
    // folder exists and cannot be opened.
    explicit MutedPads(std::string runtimeFolder);

    // Locks the list until this object is destroyed or the process ends, and reads it again. Returns 0 or an error
    // number. EWOULDBLOCK: another process holds the list. ENOENT: there is no folder, and none is to be created.
    int lock(IfMissing ifMissing);

    // The devices that were read by the constructor and by lock(), and those added and not removed since.
    const std::set<std::string>& names() const { return names_; }

    // Adds a device, and locks the list if that has not been done. Returns 0 or an error number; after an error the
    // device must not be muted. A symbolic link in the way is an error, and so is a folder that belongs to another user
    // or that others can write.
    int add(const std::string& name);
    // Removes a device that was unmuted.
    void remove(const std::string& name);

    // Whether this is the kernel's name of an input device: "input" and a number.
    static bool isName(std::string_view name);

  private:
    // Opens the folder of the list, and creates it first if `ifMissing` says so. A symbolic link in its place is an
    // error.
    Descriptor folder(IfMissing ifMissing, int& error) const;

    std::string runtimeFolder_;
    Descriptor lockedFolder_;
    std::set<std::string> names_;
};

}  // namespace kovra::helper
