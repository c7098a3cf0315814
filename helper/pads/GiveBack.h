#pragma once

#include <chrono>
#include <string>

#include "helper/pads/InputClass.h"
#include "helper/pads/Records.h"

namespace kovra::helper {

// The pauses between tries at what a driver refuses: each twice the one before.
class Pauses {
  public:
    std::chrono::milliseconds next();
    void startAnew() { next_ = first; }

    static constexpr std::chrono::milliseconds first{50};
    static constexpr std::chrono::milliseconds longest{5000};

  private:
    std::chrono::milliseconds next_ = first;
};

// One try: the device is heard again and its record is gone, or there is no such device any more. False, and one line
// in the log, where the device refuses; its record stays.
bool giveBack(const std::string& name, Records& records, const InputClass& inputs);

// Everything that is recorded, tried again for that long. Whether all of it was given back.
bool giveBackAll(Records& records, const InputClass& inputs, std::chrono::milliseconds atMost);

}  // namespace kovra::helper
