#pragma once

#include <memory>
#include <string>
#include <vector>

#include "BLE_kovra/app/AppDelegate.h"
#include "BLE_kovra/core/AppState.h"
#include "BLE_kovra/core/HelperController.h"
#include "BLE_kovra/l10n/L10n.h"
#include "BLE_kovra/platform/Platform.h"
#include "BLE_kovra/system/GlobalHotkey.h"
#include "tests/fakes/FakeAlerts.h"
#include "tests/fakes/FakeApplication.h"
#include "tests/fakes/FakeDesktop.h"
#include "tests/fakes/FakeFileSystem.h"
#include "tests/fakes/FakeHID.h"
#include "tests/fakes/FakeHotKeys.h"
#include "tests/fakes/FakeLocale.h"
#include "tests/fakes/FakeLog.h"
#include "tests/fakes/FakeLogin.h"
#include "tests/fakes/FakeMainQueue.h"
#include "tests/fakes/FakePreferences.h"
#include "tests/fakes/FakeProcesses.h"
#include "tests/fakes/FakeStatusBar.h"
#include "tests/fakes/FakeWindows.h"

namespace kovra {

// A computer with a user: the fakes of everything outside the program. It stays the same when the program ends and
// starts again.
struct Computer {
    FakeMainQueue queue;
    FakeHID hid{queue};
    FakePreferences preferences;
    FakeFileSystem files;
    FakeLog log;
    FakeLocale locale;
    FakeStatusBar statusBar{queue};
    FakeHotKeys hotKeys;
    FakeLogin login;
    FakeWindows windows;
    FakeAlerts alerts;
    FakeProcesses processes;
    FakeWorkspace workspace;
    FakeBundle bundle;

    Platform platformFor(Application& application) {
        return {application, queue, hid,     preferences, files,     log,       locale, statusBar,
                hotKeys,     login, windows, alerts,      processes, workspace, bundle};
    }

    void choose(const std::vector<DeviceDescription>& devices) {
        PreferenceArray keys;
        for (const DeviceDescription& device : devices) keys.emplace_back(device.key());
        preferences.stored.insert_or_assign("selectedDeviceIDs", keys);
    }

    std::string flag() const {
        const auto found = files.contents.find(HelperController::stateFile);
        return found == files.contents.end() ? "missing" : found->second;
    }
    std::vector<std::string> flagWrites() const {
        std::vector<std::string> texts;
        for (const auto& write : files.writes) texts.push_back(write.text);
        return texts;
    }
};

// The whole application on the fakes of a computer.
struct AppRig {
    explicit AppRig(Computer& on) : computer(on) {
        application.onTerminating = [this] { computer.queue.stop(); };
    }

    void launch() { application.run(*delegate); }

    Computer& computer;
    FakeApplication application;
    L10n texts{computer.locale.preferredLanguages()};
    Platform platform = computer.platformFor(application);
    AppState state{computer.preferences};
    HelperController helper{computer.files, computer.log};
    GlobalHotkey hotkey{computer.hotKeys};
    std::shared_ptr<AppDelegate> delegate = AppDelegate::create(platform, state, helper, hotkey, texts);
};

}  // namespace kovra
