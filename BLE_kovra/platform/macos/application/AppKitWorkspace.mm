#include "BLE_kovra/platform/macos/application/AppKitWorkspace.h"

#import <AppKit/AppKit.h>

#include "BLE_kovra/platform/macos/foundation/FoundationString.h"

namespace kovra {

void AppKitWorkspace::open(const std::string& url) {
    NSURL* made = [NSURL URLWithString:foundationString(url)];
    if (made != nil) [[NSWorkspace sharedWorkspace] openURL:made];
}

}  // namespace kovra
