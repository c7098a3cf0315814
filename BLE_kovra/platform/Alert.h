#pragma once

#include <string>
#include <vector>

namespace kovra {

// A question or a message that has to be answered. The first button is the default: Return presses it.
struct Alert {
    std::string messageText;      // the bold first line
    std::string informativeText;  // below it; may have several lines
    std::vector<std::string> buttons;
    bool operator==(const Alert&) const = default;
};

enum class AlertResponse {
    aborted = -1001,  // closed without a button, or the application is terminating
    firstButton = 1000,
    secondButton = 1001,
};

class AlertPresenter {
  public:
    virtual ~AlertPresenter() = default;

    // Shows the alert in front of everything, with the application's icon, and returns what ended it. Meanwhile the
    // main queue goes on: this blocks its caller alone. An alert that is run from there stacks above this one. Once the
    // application terminates, an open alert is aborted and none opens.
    virtual AlertResponse runModal(const Alert& alert) = 0;
};

}  // namespace kovra
