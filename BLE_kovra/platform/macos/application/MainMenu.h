#pragma once

#import <AppKit/AppKit.h>

namespace kovra {

// Returns the main menu. An accessory application does not show the menu, but the menu provides the shortcuts in its
// windows. Command-comma sends `openSettings` to the target, and Command-Q quits. Command-M minimizes the window that
// has the focus, and Command-W closes it.
NSMenu* mainMenu(id target, SEL openSettings);

}  // namespace kovra
