#include "BLE_kovra/platform/macos/views/TextAppearance.h"

namespace kovra {

namespace {

NSFontTextStyle textStyle(Font font) {
    switch (font) {
        case Font::headline:
            return NSFontTextStyleHeadline;
        case Font::subheadline:
            return NSFontTextStyleSubheadline;
        case Font::caption:
            return NSFontTextStyleCaption1;
        case Font::caption2:
            return NSFontTextStyleCaption2;
        case Font::standard:
        case Font::body:
            break;
    }
    return NSFontTextStyleBody;
}

}  // namespace

NSFont* roleFont(const TextRole& role) {
    NSFont* font = [NSFont preferredFontForTextStyle:textStyle(role.font) options:@{}];
    return role.bold ? [[NSFontManager sharedFontManager] convertFont:font toHaveTrait:NSBoldFontMask] : font;
}

NSColor* roleColor(Color color) {
    switch (color) {
        case Color::secondary:
            return [NSColor secondaryLabelColor];
        case Color::green:
            return [NSColor systemGreenColor];
        case Color::gray:
            return [NSColor systemGrayColor];
        case Color::primary:
            break;
    }
    return [NSColor labelColor];
}

}  // namespace kovra
