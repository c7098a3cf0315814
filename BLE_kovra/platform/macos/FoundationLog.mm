#include "BLE_kovra/platform/macos/FoundationLog.h"

#include "BLE_kovra/platform/macos/FoundationString.h"

namespace kovra {

void FoundationLog::log(std::string_view line) { NSLog(@"%@", foundationString(line)); }

}  // namespace kovra
