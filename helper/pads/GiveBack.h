#pragma once

#include <chrono>
#include <string>

#include "helper/pads/InputClass.h"
#include "helper/pads/Records.h"

namespace kovra::helper {

// The pauses between tries at what is refused, as by a driver: each twice the one before.
class Pauses {
  public:
    explicit Pauses(std::chrono::milliseconds first = std::chrono::milliseconds(50),
                    std::chrono::milliseconds longest = std::chrono::seconds(5))
        : first_(first), longest_(longest) {}

    std::chrono::milliseconds next();
    void startAnew() { next_ = first_; }

  private:
    std::chrono::milliseconds first_;
    std::chrono::milliseconds longest_;
    std::chrono::milliseconds next_ = first_;
};

// One try: the device is heard again and its record is gone, or there is no such device any more. False, and one line
// in the log, where the device refuses; its record stays.
bool giveBack(const std::string& name, Records& records, const InputClass& inputs);

// Everything that is recorded, tried again for that long. Whether all of it was given back.
bool giveBackAll(Records& records, const InputClass& inputs, std::chrono::milliseconds atMost);

}  // namespace kovra::helper
