#pragma once

#include <cstddef>

namespace kovra {

// The signals of the process as dispatch delivers them: on the main queue, to the sources for the signal. The test
// aborts if a signal is not ignored, because the signal's default action would then apply.
class FakeSignals {
  public:
    static void raise(int number);
    // Returns the number of sources that were not released.
    static std::size_t held();
};

}  // namespace kovra
