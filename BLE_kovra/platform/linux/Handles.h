#pragma once

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

}  // namespace kovra
