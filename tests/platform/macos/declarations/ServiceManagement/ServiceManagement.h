// The parts of ServiceManagement that BLE-kovra uses, declared for machines that are not Macs.
#pragma once

#import <Foundation/Foundation.h>

typedef enum SMAppServiceStatus : NSInteger {
    SMAppServiceStatusNotRegistered = 0,
    SMAppServiceStatusEnabled = 1,
    SMAppServiceStatusRequiresApproval = 2,
    SMAppServiceStatusNotFound = 3,
} SMAppServiceStatus;

__attribute__((availability(macos, introduced = 13.0)))
@interface SMAppService : NSObject
+ (SMAppService*)mainAppService;
+ (void)openSystemSettingsLoginItems;
- (SMAppServiceStatus)status;
- (BOOL)registerAndReturnError:(NSError**)error;
- (BOOL)unregisterAndReturnError:(NSError**)error;
@end
