#include "BLE_kovra/platform/macos/foundation/CFPreferencesStore.h"

#include "BLE_kovra/platform/macos/foundation/CFText.h"

namespace kovra {

namespace {

using Stored = CFHandle<CFPropertyListRef>;

PreferenceValue fromStored(CFPropertyListRef stored) {
    const CFTypeID type = CFGetTypeID(stored);
    if (type == CFBooleanGetTypeID()) return CFBooleanGetValue(static_cast<CFBooleanRef>(stored)) != 0;
    if (type == CFStringGetTypeID()) return utf8(static_cast<CFStringRef>(stored));
    if (type == CFNumberGetTypeID()) {
        double number = 0;
        CFNumberGetValue(static_cast<CFNumberRef>(stored), kCFNumberDoubleType, &number);
        return number;
    }
    if (type != CFArrayGetTypeID()) return OtherPreference();
    const auto* elements = static_cast<CFArrayRef>(stored);
    PreferenceArray array;
    for (CFIndex i = 0; i < CFArrayGetCount(elements); ++i) {
        array.push_back(fromStored(CFArrayGetValueAtIndex(elements, i)));
    }
    return array;
}

Stored toStored(const PreferenceValue& value) {
    if (const auto* truth = std::get_if<bool>(&value))
        return Stored::retained(*truth ? kCFBooleanTrue : kCFBooleanFalse);
    if (const auto* number = std::get_if<double>(&value)) {
        return Stored(CFNumberCreate(kCFAllocatorDefault, kCFNumberDoubleType, number));
    }
    if (const auto* text = std::get_if<std::string>(&value)) return Stored::retained(cfText(*text).get());
    if (std::holds_alternative<OtherPreference>(value)) {
        return Stored(CFDictionaryCreate(kCFAllocatorDefault, nullptr, nullptr, 0, &kCFTypeDictionaryKeyCallBacks,
                                         &kCFTypeDictionaryValueCallBacks));
    }
    std::vector<Stored> elements;
    std::vector<const void*> references;
    for (const PreferenceValue& element : std::get<PreferenceArray>(value)) {
        elements.push_back(toStored(element));
        references.push_back(elements.back().get());
    }
    return Stored(CFArrayCreate(kCFAllocatorDefault, references.data(), static_cast<CFIndex>(references.size()),
                                &kCFTypeArrayCallBacks));
}

}  // namespace

std::optional<PreferenceValue> CFPreferencesStore::object(std::string_view key) const {
    const Stored stored(CFPreferencesCopyAppValue(cfText(key).get(), kCFPreferencesCurrentApplication));
    if (!stored) return std::nullopt;
    return fromStored(stored.get());
}

void CFPreferencesStore::set(std::string_view key, const PreferenceValue& value) {
    CFPreferencesSetAppValue(cfText(key).get(), toStored(value).get(), kCFPreferencesCurrentApplication);
    CFPreferencesAppSynchronize(kCFPreferencesCurrentApplication);
}

}  // namespace kovra
