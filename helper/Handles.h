#pragma once

#include <memory>

namespace kovra::helper {

// A deleter for std::unique_ptr that calls a C library's function to release a handle.
template <auto release>
struct Release {
    template <typename T>
    void operator()(T* handle) const {
        release(handle);
    }
};

// An owner of a handle of a C library, for example Handle<udev, udev_unref>.
template <typename T, auto release>
using Handle = std::unique_ptr<T, Release<release>>;

}  // namespace kovra::helper
