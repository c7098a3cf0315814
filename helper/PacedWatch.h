#pragma once

#include <memory>

#include "helper/Loop.h"
#include "helper/RateLimit.h"

namespace kovra::helper {

// A watch that runs its work while a descriptor is readable, but no more often than the limit permits. Other programs
// can therefore not keep the daemon busy by making the descriptor readable all the time. Once the limit is reached, the
// descriptor is not watched until the work may run again. What arrives during this pause stays readable, so nothing is
// missed. A timer runs only during such a pause.
class PacedWatch {
  public:
    // The loop must outlive this watch, and the descriptor must stay open. The work should read all that there is, and
    // may destroy this watch. Throws like Loop::onReadable().
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
