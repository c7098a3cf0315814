#import "tests/platform/macos/gnustep/standins/Image.h"

#include <Block.h>

#include <map>

namespace {

struct ImageFacts {
    BOOL(^handler)(NSRect) = nullptr;
    BOOL isFlipped = NO;
    BOOL isTemplate = NO;
};
std::map<id, ImageFacts> images;

}  // namespace

@implementation StandInImage

- (instancetype)initWithSize:(NSSize)size handler:(BOOL (^)(NSRect))handler flipped:(BOOL)isFlipped {
    self = [super initWithSize:size];
    images[self] = {.handler = Block_copy(handler), .isFlipped = isFlipped};
    return self;
}

- (void)setTemplate:(BOOL)isTemplate {
    images[self].isTemplate = isTemplate;
}

- (BOOL)isFlippedStandIn {
    return images[self].isFlipped;
}

- (BOOL)isTemplateStandIn {
    return images[self].isTemplate;
}

- (void)drawStandIn {
    const NSSize size = [self size];
    images[self].handler(NSMakeRect(0, 0, size.width, size.height));
}

@end

@implementation NSImage (StandIn)

+ (instancetype)imageWithSize:(NSSize)size flipped:(BOOL)flipped drawingHandler:(BOOL (^)(NSRect rect))handler {
    return (id)[[StandInImage alloc] initWithSize:size handler:handler flipped:flipped];
}

@end
