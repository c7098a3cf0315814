#pragma once

#import <AppKit/AppKit.h>

namespace kovra {

// The menu that an accessory application has without showing it, for the keys in its windows: Command-comma sends
// `openSettings` to the target, Command-Q quits, Command-W closes the window that has the keyboard.
NSMenu* mainMenu(id target, SEL openSettings);

}  // namespace kovra
