#pragma once

#include <vector>

#include "BLE_kovra/platform/Alert.h"

namespace kovra {

// Shows alerts of AppKit. An open alert does not prevent quitting; it closes with the process.
//
// Do not call runModal() from a block of the main queue: all other blocks would wait for the user's answer. During a
// menu action and during launch, the queue keeps running.
class AppKitAlertPresenter : public AlertPresenter {
  public:
    AlertResponse runModal(const Alert& alert) override;

  private:
    std::vector<Alert> open_;
};

}  // namespace kovra
