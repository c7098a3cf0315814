#pragma once

#include <optional>
#include <string>
#include <utility>

namespace kovra::helper {

// The kernel's attribute `inhibited` of input devices: while it is 1, no event of the device reaches anybody.
class InputClass {
  public:
    explicit InputClass(std::string folder = "/sys/class/input") : folder_(std::move(folder)) {}

    // Nothing where there is no such device, where the kernel has no such attribute, or where it holds anything else.
    std::optional<bool> isInhibited(const std::string& name) const;
    // 0, or the error. Setting it to 0 opens the device anew, which a driver may refuse; it then stays 1.
    int setInhibited(const std::string& name, bool inhibited) const;

    // Whether that error says that the device is gone. Where no devices are to be seen at all, as in a chroot without
    // /sys, it says nothing.
    bool saysGone(int error) const;

  private:
    std::string path(const std::string& name) const { return folder_ + "/" + name + "/inhibited"; }

    std::string folder_;
};

}  // namespace kovra::helper
