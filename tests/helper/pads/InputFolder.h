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

// Input devices of a test's own, as files: what the kernel would do is done by hand.
class InputFolder {
  public:
    void plug(const std::string& name, const std::string& inhibited = "0\n") {
        std::filesystem::create_directories(folder_.path() / name);
        writeFile(attribute(name), inhibited);
    }
    void unplug(const std::string& name) { std::filesystem::remove_all(folder_.path() / name); }

    bool isInhibited(const std::string& name) const { return readFile(attribute(name)) == "1\n"; }
    bool isActive(const std::string& name) const { return readFile(attribute(name)) == "0\n"; }

    // From here on the driver takes no write, and takes them again.
    void refuseWrites(const std::string& name) {
        before_ = readFile(attribute(name));
        std::filesystem::remove(attribute(name));
        std::filesystem::create_symlink("/dev/full", attribute(name));
    }
    void acceptWrites(const std::string& name) {
        writeFile(folder_.path() / "next", before_);
        std::filesystem::rename(folder_.path() / "next", attribute(name));
    }

    // It is free, and takes no write for good.
    void activateAndSeal(const std::string& name) {
        sealed_ = Descriptor(::memfd_create("inhibited", MFD_CLOEXEC | MFD_ALLOW_SEALING));
        if (::write(sealed_.number(), "0\n", 2) != 2 || ::fcntl(sealed_.number(), F_ADD_SEALS, F_SEAL_WRITE) != 0)
            throw std::runtime_error("cannot seal");
        std::filesystem::remove(attribute(name));
        std::filesystem::create_symlink("/proc/self/fd/" + std::to_string(sealed_.number()), attribute(name));
    }

    InhibitedAttribute inputs() const { return InhibitedAttribute(folder_.path().string()); }

  private:
    std::filesystem::path attribute(const std::string& name) const { return folder_.path() / name / "inhibited"; }

    const TempFolder folder_;
    std::string before_;
    Descriptor sealed_;
};

}  // namespace kovra::helper
