#pragma once

#include <cstdlib>
#include <memory>

namespace kovra {

// Owns one handle of a C library and gives it back with that library's own call.
template <auto release>
struct Release {
    template <typename T>
    void operator()(T* handle) const {
        release(handle);
    }
};

template <typename T, auto release>
using Handle = std::unique_ptr<T, Release<release>>;

struct FreeMemory {
    void operator()(void* memory) const { std::free(memory); }  // NOLINT(cppcoreguidelines-no-malloc)
};

// Owns what a C library has allocated for its caller to free.
template <typename T>
using Allocated = std::unique_ptr<T, FreeMemory>;

}  // namespace kovra
