#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <utility>

namespace kovra {

// The owner of one reference to a CoreFoundation object, or of none.
template <typename Ref>
class CFHandle {
  public:
    // Takes over the reference that a function named Create or Copy returned; it may be null.
    explicit CFHandle(Ref owned) : ref_(owned) {}
    // Adds a reference to an object that another owner holds.
    static CFHandle retained(Ref borrowed) {
        return CFHandle(borrowed != nullptr ? (Ref)CFRetain(borrowed) : nullptr);  // NOLINT: CFTypeRef is const void*
    }

    CFHandle(CFHandle&& other) noexcept : ref_(std::exchange(other.ref_, nullptr)) {}
    CFHandle& operator=(CFHandle&& other) noexcept {
        std::swap(ref_, other.ref_);
        return *this;
    }
    ~CFHandle() {
        if (ref_ != nullptr) CFRelease(ref_);
    }

    Ref get() const { return ref_; }
    explicit operator bool() const { return ref_ != nullptr; }

  private:
    Ref ref_;
};

}  // namespace kovra
