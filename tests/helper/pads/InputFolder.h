#pragma once

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>
#include <string>

#include "helper/Descriptor.h"
#include "helper/pads/InhibitedAttribute.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra::helper {

// A folder with a file for each input device, in place of the kernel's attribute `inhibited`.
class InputFolder {
  public:
    void plug(const std::string& name, const std::string& inhibited = "0\n") {
        std::filesystem::create_directories(folder_.path() / name);
        writeFile(path(name), inhibited);
    }
    void unplug(const std::string& name) { std::filesystem::remove_all(folder_.path() / name); }

    bool isInhibited(const std::string& name) const { return readFile(path(name)) == "1\n"; }
    bool isActive(const std::string& name) const { return readFile(path(name)) == "0\n"; }

    // Makes writes of the attribute fail until acceptWrites() is called. Until then the attribute has no valid value.
    void refuseWrites(const std::string& name) {
        valueBefore_ = readFile(path(name));
        std::filesystem::remove(path(name));
        std::filesystem::create_symlink("/dev/full", path(name));
    }
    void acceptWrites(const std::string& name) {
        writeFile(folder_.path() / "next", valueBefore_);
        std::filesystem::rename(folder_.path() / "next", path(name));
    }

    // keepFromUser() makes the attribute read-only for the user of the test, as it is before udev applies the helper's
    // rule. giveToUser() makes it writable. A caller with root's capabilities can write it in both cases.
    void keepFromUser(const std::string& name) { std::filesystem::permissions(path(name), onlyReading()); }
    void giveToUser(const std::string& name) {
        std::filesystem::permissions(path(name), onlyReading() | std::filesystem::perms::owner_write);
    }

    // Makes the device active. Its attribute can then be read, but not written.
    void activateAndSeal(const std::string& name) {
        sealed_ = Descriptor(::memfd_create("inhibited", MFD_CLOEXEC | MFD_ALLOW_SEALING));
        if (::write(sealed_.number(), "0\n", 2) != 2 || ::fcntl(sealed_.number(), F_ADD_SEALS, F_SEAL_WRITE) != 0)
            throw std::runtime_error("cannot seal");
        std::filesystem::remove(path(name));
        std::filesystem::create_symlink("/proc/self/fd/" + std::to_string(sealed_.number()), path(name));
    }

    InhibitedAttribute attribute() const { return InhibitedAttribute(folder_.path().string()); }

  private:
    static std::filesystem::perms onlyReading() { return std::filesystem::perms(0444); }
    std::filesystem::path path(const std::string& name) const { return folder_.path() / name / "inhibited"; }

    const TempFolder folder_;
    std::string valueBefore_;
    Descriptor sealed_;
};

}  // namespace kovra::helper
