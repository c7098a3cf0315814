#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "BLE_kovra/platform/Alert.h"
#include "BLE_kovra/platform/linux/windows/WindowProcess.h"

namespace kovra {

class ActivationToken;
class SdEventLoop;

// Alerts, shown by the window process and waited for by turning the event loop. A process that dies has closed all that
// were open, and where there is none an alert is closed as soon as it is asked for.
class ProcessAlertPresenter : public AlertPresenter {
  public:
    ProcessAlertPresenter(SdEventLoop& loop, WindowProcess& process, ActivationToken& token);

    AlertResponse runModal(const Alert& alert) override;

  private:
    struct Open {
        ShowAlerts::Open shown;
        std::optional<AlertResponse> answer;
    };

    void receive(const AlertAnswered& answered);
    void abortAll();
    void show();

    SdEventLoop& loop_;
    WindowProcess& process_;
    ActivationToken& token_;
    std::uint64_t number_ = 0;                  // of the last that was opened
    std::vector<std::shared_ptr<Open>> stack_;  // those that are waited for, the topmost last
    WindowProcess::Messages::Token listening_;
    WindowProcess::Ends::Token ends_;
};

}  // namespace kovra
