#include "tests/platform/macos/fakes/FakeDefaults.h"

#include <map>

#include "tests/platform/macos/fakes/FakeValues.h"

using kovra::fakeObject;
using kovra::FakeType;
using kovra::refuse;

namespace {

class Values {
  public:
    ~Values() { clear(); }
    void set(const std::u16string& key, CFTypeRef value) {
        if (value != nullptr) CFRetain(value);
        if (const auto old = values_.extract(key)) CFRelease(old.mapped());
        if (value != nullptr) values_.emplace(key, value);
    }
    CFTypeRef get(const std::u16string& key) const {
        const auto found = values_.find(key);
        return found == values_.end() ? nullptr : found->second;
    }
    void copyFrom(const Values& other) {
        clear();
        for (const auto& [key, value] : other.values_) set(key, value);
    }
    void clear() {
        for (const auto& [key, value] : values_) CFRelease(value);
        values_.clear();
    }

  private:
    std::map<std::u16string, CFTypeRef> values_;
};

Values known, synchronized;

const std::u16string& keyOf(CFStringRef key, CFStringRef application) {
    if (application != kCFPreferencesCurrentApplication) refuse("the preferences of another application");
    return fakeObject<__CFString>(key, FakeType::text).units;
}

}  // namespace

namespace kovra {

void FakeDefaults::startAgain() { known.copyFrom(synchronized); }

void FakeDefaults::clear() {
    known.clear();
    synchronized.clear();
}

}  // namespace kovra

extern "C" {

static const __CFString currentApplication(u"current application", kovra::FakeObject::Life::endless);
const CFStringRef kCFPreferencesCurrentApplication = &currentApplication;

CFPropertyListRef CFPreferencesCopyAppValue(CFStringRef key, CFStringRef application) {
    const CFTypeRef value = known.get(keyOf(key, application));
    return value != nullptr ? CFRetain(value) : nullptr;
}

void CFPreferencesSetAppValue(CFStringRef key, CFPropertyListRef value, CFStringRef application) {
    known.set(keyOf(key, application), value);
}

Boolean CFPreferencesAppSynchronize(CFStringRef application) {
    if (application != kCFPreferencesCurrentApplication) refuse("the preferences of another application");
    synchronized.copyFrom(known);
    return true;
}
}
