#include "BLE_kovra/platform/macos/application/MainMenu.h"

namespace kovra {

namespace {

NSMenuItem* shortcut(NSString* keyEquivalent, SEL action, id target) {
    NSMenuItem* item = [[NSMenuItem alloc] initWithTitle:@"" action:action keyEquivalent:keyEquivalent];
    [item setTarget:target];
    return item;
}

NSMenuItem* submenu(NSArray<NSMenuItem*>* items) {
    NSMenu* menu = [[NSMenu alloc] initWithTitle:@""];
    for (NSMenuItem* item in items) [menu addItem:item];
    NSMenuItem* holder = [[NSMenuItem alloc] initWithTitle:@"" action:nullptr keyEquivalent:@""];
    [holder setSubmenu:menu];
    return holder;
}

}  // namespace

NSMenu* mainMenu(id target, SEL openSettings) {
    NSMenu* menu = [[NSMenu alloc] initWithTitle:@""];
    [menu addItem:submenu(@[ shortcut(@",", openSettings, target), shortcut(@"q", @selector(terminate:), nil) ])];
    [menu addItem:submenu(@[
              shortcut(@"m", @selector(performMiniaturize:), nil), shortcut(@"w", @selector(performClose:), nil)
          ])];
    return menu;
}

}  // namespace kovra
