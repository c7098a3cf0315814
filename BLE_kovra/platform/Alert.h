#pragma once

#include <string>
#include <vector>

namespace kovra {

// A modal question or message. The first button is the default button: the Return key presses it.
struct Alert {
    std::string messageText;      // the bold first line
    std::string informativeText;  // the text below that line; may have several lines
    std::vector<std::string> buttons;
    bool operator==(const Alert&) const = default;
};

enum class AlertResponse {
    aborted = -1001,  // the user closed the alert without a button, it did not open, or the application terminates
    firstButton = 1000,
    secondButton = 1001,
};

class AlertPresenter {
  public:
    virtual ~AlertPresenter() = default;

    // Shows the alert in front of other windows, with the application's icon, and returns the user's answer. Blocks
    // only the caller; the main queue keeps running. An alert that is opened before this one is answered appears above
    // it. When the application terminates, open alerts are aborted and no new one opens.
    //
    // An alert does not open while an equal one is open. If that is the topmost, it comes to the front instead, and the
    // call returns `aborted` at once. So a menu item that is chosen again and again opens one alert, and waiting
    // callers do not pile up. If the open alert is below another, this call may bring it above and wait for its answer;
    // the earlier call then returns `aborted`.
    virtual AlertResponse runModal(const Alert& alert) = 0;
};

}  // namespace kovra
