#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <utility>

namespace kovra::helper {

// The kernel's attribute `inhibited` of input devices. While it is 1, no reader receives an event of the device.
class InhibitedAttribute {
  public:
    explicit InhibitedAttribute(std::string folder = "/sys/class/input") : folder_(std::move(folder)) {}

    // The value of the attribute. Empty if the device or the attribute does not exist, if it cannot be read, or if the
    // value is neither 0 nor 1.
    std::optional<bool> isInhibited(const std::string& name) const;
    // Sets the attribute. Returns 0 or an error number. Setting it to 0 opens the device again. The driver may refuse
    // that, and then the attribute stays 1.
    int setInhibited(const std::string& name, bool inhibited) const;

    // Lets this group write the attribute, besides its owner. Returns 0 or an error number.
    int giveTo(const std::string& name, gid_t group) const;

    // Whether this error means that the device was removed. ENOENT does not mean that if the folder of all devices is
    // missing too, as in a chroot without /sys.
    bool meansGone(int error) const;

  private:
    std::string path(const std::string& name) const { return folder_ + "/" + name + "/inhibited"; }

    std::string folder_;
};

}  // namespace kovra::helper
