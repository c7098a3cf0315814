#include "BLE_kovra/platform/macos/application/AppKitAlertPresenter.h"

#import <AppKit/AppKit.h>

#include <algorithm>

#include "BLE_kovra/platform/macos/foundation/FoundationString.h"

namespace kovra {

AlertResponse AppKitAlertPresenter::runModal(const Alert& alert) {
    if (std::find(open_.begin(), open_.end(), alert) != open_.end()) {
        [[[NSApplication sharedApplication] modalWindow] makeKeyAndOrderFront:nil];
        return AlertResponse::aborted;
    }
    NSAlert* made = [[NSAlert alloc] init];
    [made setMessageText:foundationString(alert.messageText)];
    [made setInformativeText:foundationString(alert.informativeText)];
    for (const std::string& button : alert.buttons) [made addButtonWithTitle:foundationString(button)];

    // Show the alert above other programs' windows even if the system does not let this program come to the front.
    [[made window] setLevel:NSFloatingWindowLevel];
    // By default, signals and the end of the session would not end the application while an alert is open.
    [[made window] setPreventsApplicationTerminationWhenModal:NO];

    open_.push_back(alert);
    const NSModalResponse response = [made runModal];
    open_.pop_back();
    if (response == NSAlertFirstButtonReturn) return AlertResponse::firstButton;
    if (response == NSAlertSecondButtonReturn) return AlertResponse::secondButton;
    return AlertResponse::aborted;
}

}  // namespace kovra
