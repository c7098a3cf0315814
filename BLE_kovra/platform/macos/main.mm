// The composition root: creates the services of macOS and runs the application with them.

#import <Foundation/Foundation.h>

#include <csignal>
#include <memory>
#include <vector>

#include "BLE_kovra/app/BLE_kovraApp.h"
#include "BLE_kovra/platform/Platform.h"
#include "BLE_kovra/platform/macos/application/AppKitAlertPresenter.h"
#include "BLE_kovra/platform/macos/application/AppKitApplication.h"
#include "BLE_kovra/platform/macos/application/AppKitStatusBar.h"
#include "BLE_kovra/platform/macos/application/AppKitWorkspace.h"
#include "BLE_kovra/platform/macos/application/AppServiceLogin.h"
#include "BLE_kovra/platform/macos/foundation/CFLocale.h"
#include "BLE_kovra/platform/macos/foundation/CFPreferencesStore.h"
#include "BLE_kovra/platform/macos/foundation/FoundationLog.h"
#include "BLE_kovra/platform/macos/foundation/MainBundle.h"
#include "BLE_kovra/platform/macos/hid/IOKitHIDManager.h"
#include "BLE_kovra/platform/macos/hotkeys/CarbonHotKeyService.h"
#include "BLE_kovra/platform/macos/loop/CFDescriptorLoop.h"
#include "BLE_kovra/platform/macos/loop/DispatchMainQueue.h"
#include "BLE_kovra/platform/macos/loop/DispatchSignal.h"
#include "BLE_kovra/platform/macos/loop/InstancePort.h"
#include "BLE_kovra/platform/macos/views/AppKitWindowHost.h"
#include "BLE_kovra/platform/posix/PosixFileSystem.h"
#include "BLE_kovra/platform/posix/PosixProcessRunner.h"
#include "BLE_kovra/platform/posix/ProcessStart.h"

namespace {

void runApplication() {
    kovra::InstancePort instance("org.ble-kovra.BLEKovra");
    if (instance.isSecond()) return;  // the first instance opens its settings

    kovra::DispatchMainQueue queue;
    kovra::AppKitApplication application(queue);
    instance.listen([&] { application.reopen(); });
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
    kovra::CFDescriptorLoop loop(queue, application);
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
