#pragma once

#include <cstddef>

namespace kovra {

// The signals of the process as dispatch hears them: on the main queue, by the sources that are for them. A signal that
// the process has not been told to ignore would do to it what signals do; that is refused.
class FakeSignals {
  public:
    static void raise(int number);
    // Sources that nobody has given back.
    static std::size_t held();
};

}  // namespace kovra
