#pragma once

#include <cstddef>

namespace kovra {

// The user's preferences of one application, which macOS calls defaults. The process sees every value that was set.
// Only synchronized values remain after the process has ended.
struct FakeDefaults {
    static void startAgain();
    static void clear();
};

}  // namespace kovra
