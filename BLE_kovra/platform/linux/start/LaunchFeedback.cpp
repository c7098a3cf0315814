#include "BLE_kovra/platform/linux/start/LaunchFeedback.h"

#include <utility>

namespace kovra {

LaunchFeedback::LaunchFeedback(MainQueue& queue, End end, std::chrono::milliseconds limit)
    : queue_(queue), end_(std::move(end)), limit_(limit) {}

LaunchFeedback::~LaunchFeedback() {
    if (timer_) timer_->cancel();
}

void LaunchFeedback::begin(const std::string& id) {
    if (id.empty() || ids_.size() == most) return;
    ids_.push_back(id);
    if (!timer_) timer_ = queue_.asyncAfter(limit_, [this] { end(); });
}

void LaunchFeedback::end() {
    if (timer_) timer_->cancel();
    timer_.reset();
    for (const std::string& id : std::exchange(ids_, {})) end_(id);
}

}  // namespace kovra
