#pragma once

#import <ServiceManagement/ServiceManagement.h>

// The list of login items.
@interface StandInLoginItems : NSObject
+ (void)reset;
+ (void)setStatus:(SMAppServiceStatus)status;
+ (void)obstruct;
// Returns how often the page of the settings was opened.
+ (int)pagesOpened;
@end
