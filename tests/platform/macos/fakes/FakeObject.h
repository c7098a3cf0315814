#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <cstddef>

namespace kovra {

// Aborts the test where the real system would crash or hang.
[[noreturn]] void refuse(const char* why);

enum class FakeType : CFTypeID {
    text = 1,
    truth,
    number,
    array,
    dictionary,
    locale,
    descriptor,
    source,
    loop,
    port,
    device,
    manager
};

// An object that counts references, as every CoreFoundation object does. AddressSanitizer finds a use after the last
// release.
class FakeObject {
  public:
    enum class Life { counted, endless };  // endless: constants of the system, which are never released

    explicit FakeObject(FakeType type, Life life = Life::counted);
    FakeObject(const FakeObject&) = delete;
    FakeObject& operator=(const FakeObject&) = delete;
    virtual ~FakeObject();

    FakeType type() const { return type_; }
    void retain() const { ++references_; }
    void release() const;
    long references() const { return references_; }

    // Returns the number of objects that still have references, without the constants.
    static std::size_t alive();

  private:
    FakeType type_;
    Life life_;
    mutable long references_ = 1;
};

// Returns the object behind a reference, which must be of this type.
template <typename Object>
Object& fakeObject(CFTypeRef reference, FakeType type) {
    if (reference == nullptr) refuse("a null reference");
    auto* object = static_cast<const FakeObject*>(reference);
    if (object->type() != type) refuse("an object of another type");
    return *const_cast<Object*>(static_cast<const Object*>(object));
}

}  // namespace kovra
