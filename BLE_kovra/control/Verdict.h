#pragma once

#include <string>

#include "BLE_kovra/control/Facts.h"

namespace kovra::control {

// The answer to "why is my trackpad dead?".
struct Verdict {
    enum class Answer { works = 0, muted = 1, unknown = 2 };  // the values are the exit codes

    Answer answer = Answer::unknown;
    std::string reason;    // one word for scripts, such as "deviceConnected"
    std::string sentence;  // for people
};

// The kernel's attribute alone decides whether the trackpad is muted. All other facts only explain it.
Verdict verdictOf(const Facts& facts);

}  // namespace kovra::control
