#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "BLE_kovra/platform/Alert.h"
#include "BLE_kovra/platform/linux/windows/WindowProcess.h"

namespace kovra {

class ActivationToken;
class SdEventLoop;

// Shows alerts in the window process. A caller waits in a nested event loop. If the window process ends unexpectedly,
// all open alerts count as aborted. If it cannot be started, new alerts are aborted without being shown.
//
// An alert that is open already comes to the front. The nested loops take stack, so at most `mostNested` callers wait.
// Further alerts do not open.
class ProcessAlertPresenter : public AlertPresenter {
  public:
    static constexpr std::size_t mostNested = 8;

    ProcessAlertPresenter(SdEventLoop& loop, WindowProcess& process, ActivationToken& token);

    AlertResponse runModal(const Alert& alert) override;

  private:
    struct Open {
        ShowAlerts::Open shown;
        std::optional<AlertResponse> answer;
    };

    // Returns the topmost alert that is not answered and for which the function returns true, or null.
    std::shared_ptr<Open> findOpen(const std::function<bool(const Open&)>& isMeant) const;
    std::shared_ptr<Open> topmost() const;
    void receive(const AlertAnswered& answered);
    void abortAll();
    void bringToFront(const std::shared_ptr<Open>& open);
    void show();

    SdEventLoop& loop_;
    WindowProcess& process_;
    ActivationToken& token_;
    std::uint64_t number_ = 0;                  // number of the last alert that was opened
    std::uint64_t fronts_ = 0;                  // how many times an open alert was brought to the front
    std::vector<std::shared_ptr<Open>> stack_;  // alerts that a caller waits for, the topmost one last
    WindowProcess::Messages::Token listening_;
    WindowProcess::Ends::Token ends_;
};

}  // namespace kovra
