#pragma once

#include <functional>
#include <vector>

#include "BLE_kovra/platform/Alert.h"

namespace kovra {

// Alerts without a screen. Each one runs `meanwhile` while it is open, and is then answered with `answer`.
// `terminate()` simulates the end of the application.
class FakeAlerts : public AlertPresenter {
  public:
    AlertResponse runModal(const Alert& alert) override {
        if (hasTerminated_) return AlertResponse::aborted;
        shown.push_back(alert);
        if (onShown) onShown();
        if (meanwhile) meanwhile();
        return hasTerminated_ ? AlertResponse::aborted : answer;
    }

    void terminate() { hasTerminated_ = true; }

    AlertResponse answer = AlertResponse::aborted;
    std::function<void()> meanwhile;
    std::function<void()> onShown;
    std::vector<Alert> shown;

  private:
    bool hasTerminated_ = false;
};

}  // namespace kovra
