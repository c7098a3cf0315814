#pragma once

#include <optional>
#include <string>
#include <utility>

namespace kovra::helper {

// The kernel's attribute `inhibited` of input devices: while it is 1, no event of the device reaches anybody.
class InputClass {
  public:
    explicit InputClass(std::string folder = "/sys/class/input") : folder_(std::move(folder)) {}

    // Nothing where there is no such device, or where the kernel has no such attribute.
    std::optional<bool> isInhibited(const std::string& name) const;
    // 0, or the error. Setting it to 0 opens the device anew, which a driver may refuse; it then stays 1.
    int setInhibited(const std::string& name, bool inhibited) const;

    // Whether the error says that the device is gone.
    static bool saysGone(int error);

  private:
    std::string path(const std::string& name) const { return folder_ + "/" + name + "/inhibited"; }

    std::string folder_;
};

}  // namespace kovra::helper
