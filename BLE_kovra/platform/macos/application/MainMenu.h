#pragma once

#import <AppKit/AppKit.h>

namespace kovra {

// An accessory application does not show its main menu, but the menu provides the shortcuts in its windows.
// Command-comma sends `openSettings` to the target, Command-Q quits, Command-W closes the window that has the focus.
NSMenu* mainMenu(id target, SEL openSettings);

}  // namespace kovra
