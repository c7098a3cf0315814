#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <utility>

namespace kovra {

// Owns one reference of a CoreFoundation object, or nothing.
template <typename Ref>
class CFHandle {
  public:
    // Of what a function named Create or Copy returned, whose reference is the caller's; null where it had none.
    explicit CFHandle(Ref owned) : ref_(owned) {}
    // Of what somebody else owns.
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
