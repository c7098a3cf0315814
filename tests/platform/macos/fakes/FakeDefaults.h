#pragma once

#include <cstddef>

namespace kovra {

// The user's defaults of one application. The process sees every value that was set. Only synchronized values outlive
// the process.
struct FakeDefaults {
    static void startAgain();
    static void clear();
};

}  // namespace kovra
