#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "BLE_kovra/app/AppDelegate.h"
#include "BLE_kovra/core/AppState.h"
#include "BLE_kovra/core/HelperController.h"
#include "BLE_kovra/l10n/L10n.h"
#include "BLE_kovra/platform/Platform.h"
#include "tests/fakes/FakeAlerts.h"
#include "tests/fakes/FakeDesktop.h"
#include "tests/fakes/FakeHID.h"
#include "tests/fakes/FakeHotKeys.h"
#include "tests/fakes/FakeLocale.h"
#include "tests/fakes/FakeLogin.h"
#include "tests/fakes/FakeMainQueue.h"
#include "tests/fakes/FakeProcesses.h"
#include "tests/fakes/FakeStatusBar.h"
#include "tests/fakes/FakeWindows.h"
#include "tests/model/Action.h"

namespace kovra::model {

// The whole logic on fakes, wired as in the application and driven by the same actions as the model. The fakes record
// every effect in the journal when it happens, so that the order between services is compared too.
class Program {
  public:
    Program(const Beginning& beginning, Journal& journal);

    void perform(const Action& action);

    std::string snapshot() const;
    std::size_t queued() const { return queue_.queued(); }

  private:
    class Files;
    class Log;
    class Preferences;
    class Desktop;
    struct Process;

    void launch(const std::vector<Action>& early);
    template <typename T>
    void record(Published<T>& property, Property name);
    template <typename T>
    Subscription react(Published<T>& property, const Action& subscription);
    Subscription subscribe(const Action& subscription);
    std::shared_ptr<AppDelegate> callableDelegate() const;

    Journal& journal_;
    FakeMainQueue queue_;
    FakeHID hid_{queue_};
    FakeLocale locale_;
    FakeStatusBar statusBar_{queue_};
    FakeHotKeys hotKeys_;
    FakeLogin login_;
    FakeWindows windows_;
    FakeAlerts alerts_;
    FakeProcesses processes_;
    FakeWorkspace workspace_;
    FakeBundle bundle_;
    std::shared_ptr<Log> log_;
    std::shared_ptr<Files> files_;
    std::shared_ptr<Preferences> preferences_;
    std::shared_ptr<Process> process_;
};

}  // namespace kovra::model
