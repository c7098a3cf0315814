#pragma once

#include <memory>

#include "helper/Loop.h"
#include "helper/RateLimit.h"

namespace kovra::helper {

// Runs the work while a descriptor is readable, but no more often than the limit permits. Others can then make the
// descriptor readable as often as they like, and the daemon hardly works for it. Once the limit is reached the
// descriptor is not watched until the work may run again, so nothing that can be read is missed. Without events there
// is no timer.
class PacedWatch {
  public:
    // The caller keeps the loop and the descriptor open for as long as this exists. The work should read all that there
    // is, and may destroy this watch. Throws like Loop::onReadable().
    PacedWatch(Loop& loop, int descriptor, RateLimit limit, Loop::Work work);
    PacedWatch(const PacedWatch&) = delete;
    PacedWatch& operator=(const PacedWatch&) = delete;

  private:
    void listen();
    void handle();

    Loop& loop_;
    const int descriptor_;
    RateLimit limit_;
    const Loop::Work work_;
    std::unique_ptr<Loop::Watch> watch_;  // of the descriptor, or of the end of a pause
};

}  // namespace kovra::helper
