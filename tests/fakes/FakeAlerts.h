#pragma once

#include <algorithm>
#include <functional>
#include <vector>

#include "BLE_kovra/platform/Alert.h"

namespace kovra {

// Alerts without a screen. Each one runs `meanwhile` while it is open, and is then answered with `answer`.
// `terminate()` simulates the end of the application.
class FakeAlerts : public AlertPresenter {
  public:
    AlertResponse runModal(const Alert& alert) override {
        if (hasTerminated_ || std::find(open_.begin(), open_.end(), alert) != open_.end())
            return AlertResponse::aborted;
        shown.push_back(alert);
        open_.push_back(alert);
        if (onShown) onShown();
        if (meanwhile) meanwhile();
        open_.pop_back();
        return hasTerminated_ ? AlertResponse::aborted : answer;
    }

    void terminate() { hasTerminated_ = true; }

    AlertResponse answer = AlertResponse::aborted;
    std::function<void()> meanwhile;
    std::function<void()> onShown;
    std::vector<Alert> shown;

  private:
    std::vector<Alert> open_;
    bool hasTerminated_ = false;
};

}  // namespace kovra
