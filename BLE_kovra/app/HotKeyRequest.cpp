#include "BLE_kovra/app/HotKeyRequest.h"

namespace kovra {

namespace {

// These are no choices of the user. They record what has happened: the user was asked; the last request was granted,
// and no start since then has found that the desktop remembers it.
constexpr const char* kRequested = "hotKeyRequested";
constexpr const char* kGranted = "hotKeyGranted";

}  // namespace

void HotKeyRequest::stateChanged() {
    switch (hotkey_.state().holder) {
        case HotKeyState::Holder::us:
            return record(kGranted, hasMade_);
        case HotKeyState::Holder::refused:
            return record(kGranted, false);
        case HotKeyState::Holder::unrequested:
            return makeIfDue();
        case HotKeyState::Holder::another:
        case HotKeyState::Holder::nobody:
            return;
    }
}

void HotKeyRequest::settingsOpened() {
    hasOpenedSettings_ = true;
    makeIfDue();
}

void HotKeyRequest::make() {
    if (!hotkey_.state().mayBeRequested()) return;
    hasMade_ = true;
    record(kRequested, true);
    hotkey_.request();
}

void HotKeyRequest::makeIfDue() {
    if (hotkey_.state().holder != HotKeyState::Holder::unrequested) return;
    const bool isForgotten = store_.boolean(kGranted);
    const bool isFirst = hasOpenedSettings_ && !store_.boolean(kRequested);
    if (!isForgotten && !isFirst) return;
    record(kGranted, false);
    make();
}

void HotKeyRequest::record(const char* key, bool value) {
    if (store_.boolean(key) != value) store_.set(key, value);
}

}  // namespace kovra
