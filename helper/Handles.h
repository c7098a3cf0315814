#pragma once

#include <memory>

namespace kovra::helper {

// Calls the release function of the C library that a handle comes from.
template <auto release>
struct Release {
    template <typename T>
    void operator()(T* handle) const {
        release(handle);
    }
};

// Owns a handle of a C library, for example Handle<udev, udev_unref>.
template <typename T, auto release>
using Handle = std::unique_ptr<T, Release<release>>;

}  // namespace kovra::helper
