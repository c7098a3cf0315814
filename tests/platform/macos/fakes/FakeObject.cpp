#include "tests/platform/macos/fakes/FakeObject.h"

#include <cstdio>
#include <cstdlib>

namespace kovra {

namespace {
std::size_t objectsAlive = 0;
}

void refuse(const char* why) {
    std::fprintf(stderr, "The system refuses: %s\n", why);
    std::abort();
}

FakeObject::FakeObject(FakeType type, Life life) : type_(type), life_(life) {
    if (life == Life::counted) ++objectsAlive;
}

FakeObject::~FakeObject() {
    if (life_ == Life::counted) --objectsAlive;
}

void FakeObject::release() const {
    if (life_ == Life::counted && --references_ == 0) delete this;
}

std::size_t FakeObject::alive() { return objectsAlive; }

}  // namespace kovra

extern "C" {

const CFAllocatorRef kCFAllocatorDefault = nullptr;

CFTypeRef CFRetain(CFTypeRef object) {
    if (object == nullptr) kovra::refuse("CFRetain of null");
    static_cast<const kovra::FakeObject*>(object)->retain();
    return object;
}

void CFRelease(CFTypeRef object) {
    if (object == nullptr) kovra::refuse("CFRelease of null");
    static_cast<const kovra::FakeObject*>(object)->release();
}

CFTypeID CFGetTypeID(CFTypeRef object) {
    if (object == nullptr) kovra::refuse("CFGetTypeID of null");
    return static_cast<CFTypeID>(static_cast<const kovra::FakeObject*>(object)->type());
}
}
