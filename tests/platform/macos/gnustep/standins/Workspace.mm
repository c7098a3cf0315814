#import <AppKit/AppKit.h>

// GNUstep's workspace starts a daemon to send notifications to other programs. This one sends them in this process.
@implementation NSWorkspace (StandIn)

+ (NSWorkspace*)sharedWorkspace {
    static NSWorkspace* workspace = (NSWorkspace*)NSAllocateObject(self, 0, NSDefaultMallocZone());
    return workspace;
}

- (NSNotificationCenter*)notificationCenter {
    static NSNotificationCenter* center = [[NSNotificationCenter alloc] init];
    return center;
}

@end
