#pragma once

#include <malloc.h>

#include <cstddef>

// A function of the address sanitizer, which replaces malloc. Without the sanitizer the address of the function is
// null.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes() __attribute__((weak));  // NOLINT

namespace kovra {

// Returns the memory that this process holds, for tests that compare before and after.
inline std::size_t bytesInUse() {
    if (__sanitizer_get_current_allocated_bytes != nullptr) return __sanitizer_get_current_allocated_bytes();
    return ::mallinfo2().uordblks;
}

}  // namespace kovra
