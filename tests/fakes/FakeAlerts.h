#pragma once

#include <functional>
#include <vector>

#include "BLE_kovra/platform/Alert.h"

namespace kovra {

// A user who answers every alert in the same way, after doing what `meanwhile` says while it is open.
class FakeAlerts : public AlertPresenter {
  public:
    AlertResponse runModal(const Alert& alert) override {
        shown.push_back(alert);
        if (onShown) onShown();
        if (meanwhile) meanwhile();
        return answer;
    }

    AlertResponse answer = AlertResponse::aborted;
    std::function<void()> meanwhile;
    std::function<void()> onShown;
    std::vector<Alert> shown;
};

}  // namespace kovra
