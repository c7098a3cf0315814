#pragma once

#include <cstddef>

namespace kovra {

// The sources of dispatch on the main queue: signals of the process, and timers.
//
// A timer is late by its leeway. While the system naps (see FakeRunLoop), only strict timers fire.
class FakeSources {
  public:
    // Sends the signal to the process. Aborts the test if the process does not ignore the signal, because the signal's
    // default action would then apply.
    static void raise(int number);
    // Returns the number of sources that were not released.
    static std::size_t held();
};

}  // namespace kovra
