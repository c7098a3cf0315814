#include "BLE_kovra/platform/macos/application/AppServiceLogin.h"

#import <ServiceManagement/ServiceManagement.h>

#include "BLE_kovra/platform/macos/foundation/FoundationString.h"

namespace kovra {

namespace {

Outcome outcome(bool succeeded, NSError* error) {
    return succeeded ? Outcome::success() : Outcome::failure(utf8String([error localizedDescription]));
}

}  // namespace

LoginStatus AppServiceLogin::status() const { return static_cast<LoginStatus>([[SMAppService mainAppService] status]); }

Outcome AppServiceLogin::registerApplication() {
    if (status() == LoginStatus::requiresApproval) [SMAppService openSystemSettingsLoginItems];
    NSError* error = nil;
    const bool succeeded = [[SMAppService mainAppService] registerAndReturnError:&error];
    return outcome(succeeded, error);
}

Outcome AppServiceLogin::unregisterApplication() {
    NSError* error = nil;
    const bool succeeded = [[SMAppService mainAppService] unregisterAndReturnError:&error];
    return outcome(succeeded, error);
}

}  // namespace kovra
