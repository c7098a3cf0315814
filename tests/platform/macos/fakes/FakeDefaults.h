#pragma once

#include <cstddef>

namespace kovra {

// The user's defaults of one application. What is set is known to the process; only what is synchronized outlives it.
struct FakeDefaults {
    static void startAgain();
    static void clear();
};

}  // namespace kovra
