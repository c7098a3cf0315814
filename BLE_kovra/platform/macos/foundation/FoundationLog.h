#pragma once

#include "BLE_kovra/platform/SystemLog.h"

namespace kovra {

// The unified log. The lines appear under the program's name.
class FoundationLog : public SystemLog {
  public:
    void log(std::string_view line) override;
};

}  // namespace kovra
