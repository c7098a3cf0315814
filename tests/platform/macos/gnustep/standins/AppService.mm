#import "tests/platform/macos/gnustep/standins/AppService.h"

namespace {

struct LoginItems {
    SMAppServiceStatus status = SMAppServiceStatusNotRegistered;
    bool isObstructed = false;
    int pagesOpened = 0;
};
LoginItems loginItems;

}  // namespace

@implementation SMAppService

+ (SMAppService*)mainAppService {
    static SMAppService* service = [[SMAppService alloc] init];
    return service;
}

+ (void)openSystemSettingsLoginItems {
    ++loginItems.pagesOpened;
}

- (SMAppServiceStatus)status {
    return loginItems.status;
}

- (BOOL)setStatus:(SMAppServiceStatus)status error:(NSError**)error {
    if (loginItems.isObstructed) {
        *error = [NSError errorWithDomain:@"StandIn"
                                     code:1
                                 userInfo:@{NSLocalizedDescriptionKey : @"Operation not permitted"}];
        return NO;
    }
    if (loginItems.status != SMAppServiceStatusRequiresApproval) loginItems.status = status;
    return YES;
}

- (BOOL)registerAndReturnError:(NSError**)error {
    return [self setStatus:SMAppServiceStatusEnabled error:error];
}

- (BOOL)unregisterAndReturnError:(NSError**)error {
    return [self setStatus:SMAppServiceStatusNotRegistered error:error];
}

@end

@implementation StandInLoginItems

+ (void)reset {
    loginItems = {};
}

+ (void)setStatus:(SMAppServiceStatus)status {
    loginItems.status = status;
}

+ (void)obstruct {
    loginItems.isObstructed = true;
}

+ (int)pagesOpened {
    return loginItems.pagesOpened;
}

@end
