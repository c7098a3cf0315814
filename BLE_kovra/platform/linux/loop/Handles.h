#pragma once

#include <cstdlib>
#include <memory>

namespace kovra {

template <auto release>
struct Release {
    template <typename T>
    void operator()(T* handle) const {
        release(handle);
    }
};

// Owns a handle of a C library and releases it with the library's own function.
template <typename T, auto release>
using Handle = std::unique_ptr<T, Release<release>>;

struct FreeMemory {
    void operator()(void* memory) const { std::free(memory); }  // NOLINT(cppcoreguidelines-no-malloc)
};

// Owns memory that a C library has allocated and that its caller must free.
template <typename T>
using Allocated = std::unique_ptr<T, FreeMemory>;

}  // namespace kovra
