#import <AppKit/AppKit.h>

NSFontTextStyle const NSFontTextStyleBody = @"body";
NSFontTextStyle const NSFontTextStyleCaption1 = @"caption1";
NSFontTextStyle const NSFontTextStyleCaption2 = @"caption2";
NSFontTextStyle const NSFontTextStyleHeadline = @"headline";
NSFontTextStyle const NSFontTextStyleSubheadline = @"subheadline";

@implementation NSFont (StandIn)

+ (NSFont*)preferredFontForTextStyle:(NSFontTextStyle)style options:(NSDictionary*)options {
    static_cast<void>(style);
    static_cast<void>(options);
    return [NSFont systemFontOfSize:12];
}

@end
