#pragma once

#include <systemd/sd-event.h>

#include <cstdint>

#include "tests/helper/model/Machine.h"

namespace kovra::helper::model {

// A source of events of the helper's loop: a descriptor, a signal, or otherwise a time.
struct Source {
    const Process* owner = nullptr;
    int descriptor = -1;
    int signal = 0;
    Time time{0};
    sd_event_io_handler_t onReadable = nullptr;
    sd_event_time_handler_t onTime = nullptr;
    sd_event_signal_handler_t onSignal = nullptr;
    void* context = nullptr;
    bool isEnabled = true;
    std::uint64_t lastTurn = 0;
};

}  // namespace kovra::helper::model
