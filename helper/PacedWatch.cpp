#include "helper/PacedWatch.h"

#include <chrono>
#include <utility>

namespace kovra::helper {

PacedWatch::PacedWatch(Loop& loop, int descriptor, RateLimit limit, Loop::Work work)
    : loop_(loop), descriptor_(descriptor), limit_(limit), work_(std::move(work)) {
    listen();
}

void PacedWatch::listen() {
    watch_ = loop_.onReadable(descriptor_, [this] { handle(); });
}

void PacedWatch::handle() {
    const auto now = RateLimit::Clock::now();
    limit_.use(now);
    const auto pause = limit_.delay(now);
    if (pause > std::chrono::milliseconds(0)) watch_ = loop_.after(pause, [this] { listen(); });
    const Loop::Work work = work_;  // a copy, since the work may destroy this watch
    work();
}

}  // namespace kovra::helper
