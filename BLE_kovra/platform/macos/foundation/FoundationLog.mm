#include "BLE_kovra/platform/macos/foundation/FoundationLog.h"

#include "BLE_kovra/platform/macos/foundation/FoundationString.h"

namespace kovra {

void FoundationLog::log(std::string_view line) { NSLog(@"%@", foundationString(line)); }

}  // namespace kovra
