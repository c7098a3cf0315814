// The composition root: makes the services of macOS and runs the application on them.

#import <Foundation/Foundation.h>

#include <csignal>
#include <memory>
#include <vector>

#include "BLE_kovra/app/BLE_kovraApp.h"
#include "BLE_kovra/platform/Platform.h"
#include "BLE_kovra/platform/macos/AppKitAlertPresenter.h"
#include "BLE_kovra/platform/macos/AppKitApplication.h"
#include "BLE_kovra/platform/macos/AppKitStatusBar.h"
#include "BLE_kovra/platform/macos/AppKitWindowHost.h"
#include "BLE_kovra/platform/macos/AppKitWorkspace.h"
#include "BLE_kovra/platform/macos/AppServiceLogin.h"
#include "BLE_kovra/platform/macos/CFDescriptorLoop.h"
#include "BLE_kovra/platform/macos/CFLocale.h"
#include "BLE_kovra/platform/macos/CFPreferencesStore.h"
#include "BLE_kovra/platform/macos/CarbonHotKeyService.h"
#include "BLE_kovra/platform/macos/DispatchMainQueue.h"
#include "BLE_kovra/platform/macos/DispatchSignal.h"
#include "BLE_kovra/platform/macos/FoundationLog.h"
#include "BLE_kovra/platform/macos/IOKitHIDManager.h"
#include "BLE_kovra/platform/macos/MainBundle.h"
#include "BLE_kovra/platform/posix/PosixFileSystem.h"
#include "BLE_kovra/platform/posix/PosixProcessRunner.h"
#include "BLE_kovra/platform/posix/ProcessStart.h"

namespace {

void runApplication() {
    kovra::DispatchMainQueue queue;
    kovra::AppKitApplication application(queue);
    std::vector<std::unique_ptr<kovra::DispatchSignal>> signals;
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        if (number == SIGHUP && kovra::startedIgnoringHangUp()) continue;
        signals.push_back(std::make_unique<kovra::DispatchSignal>(number, [&] { application.terminate(); }));
    }

    kovra::IOKitHIDService hid;
    kovra::CFPreferencesStore preferences;
    kovra::PosixFileSystem files;
    kovra::FoundationLog log;
    kovra::CFLocale locale;
    kovra::AppKitStatusBar statusBar;
    kovra::CarbonHotKeyService hotKeys;
    kovra::AppServiceLogin login;
    kovra::AppKitWorkspace workspace;
    kovra::AppKitWindowHost windows(queue, workspace);
    kovra::AppKitAlertPresenter alerts;
    kovra::CFDescriptorLoop loop(queue);
    kovra::PosixProcessRunner processes(loop);
    kovra::MainBundle bundle;
    const kovra::Platform platform{application, queue, hid,     preferences, files,     log,       locale, statusBar,
                                   hotKeys,     login, windows, alerts,      processes, workspace, bundle};
    kovra::BLE_kovraApp::main(platform);
}

}  // namespace

int main() {
    kovra::prepareProcess();
    @autoreleasepool {
        runApplication();
    }
    return 0;
}
