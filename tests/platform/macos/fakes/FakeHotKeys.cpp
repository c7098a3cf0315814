#include "tests/platform/macos/fakes/FakeHotKeys.h"

#include <Carbon/Carbon.h>

#include <algorithm>
#include <cstdio>
#include <memory>

#include "tests/platform/macos/fakes/FakeObject.h"

using kovra::FakeHotKeys;
using kovra::refuse;

struct OpaqueEventTargetRef {};
struct OpaqueEventHandlerRef {
    EventHandlerUPP handler;
    void* context;
    std::set<std::pair<OSType, UInt32>> kinds;
};
struct OpaqueEventHotKeyRef {
    UInt32 keyCode;
    UInt32 modifiers;
};

namespace {

constexpr OSStatus refused = -50;

OpaqueEventTargetRef application;
std::vector<std::unique_ptr<OpaqueEventHandlerRef>> handlers;
std::vector<std::unique_ptr<OpaqueEventHotKeyRef>> hotKeys;
std::set<std::pair<UInt32, UInt32>> taken;
std::set<std::pair<UInt32, UInt32>> sharedKeys;
int sharedPresses = 0;
std::vector<std::string> requests;
bool areHandlersRefused = false;

template <typename Ref>
void drop(std::vector<std::unique_ptr<Ref>>& all, const Ref* one) {
    const auto isIt = [&](const std::unique_ptr<Ref>& other) { return other.get() == one; };
    if (std::erase_if(all, isIt) != 1) refuse("to release what is not ours");
}

std::string hexadecimal(std::uint32_t number) {
    char text[16];
    std::snprintf(text, sizeof text, "%x", number);
    return text;
}

void deliver(UInt32 kind) {
    std::vector<std::pair<EventHandlerUPP, void*>> called;
    for (const auto& handler : handlers) {
        const bool isFor = handler->kinds.contains({kEventClassKeyboard, kind});
        if (isFor) called.emplace(called.begin(), handler->handler, handler->context);
    }
    for (const auto& [handler, context] : called) {
        if (handler(nullptr, nullptr, context) == noErr) break;
    }
}

}  // namespace

namespace kovra {

bool FakeHotKeys::press(std::uint32_t keyCode, std::uint32_t modifiers) {
    const auto isIt = [&](const auto& key) { return key->keyCode == keyCode && key->modifiers == modifiers; };
    const bool isShared = sharedKeys.contains({keyCode, modifiers});
    if (isShared) ++sharedPresses;
    if (std::ranges::none_of(hotKeys, isIt)) return !isShared && !taken.contains({keyCode, modifiers});
    deliver(kEventHotKeyPressed);
    deliver(kEventHotKeyReleased);
    return false;
}

void FakeHotKeys::takeByAnother(std::uint32_t keyCode, std::uint32_t modifiers) { taken.insert({keyCode, modifiers}); }

void FakeHotKeys::shareWithAnother(std::uint32_t keyCode, std::uint32_t modifiers) {
    sharedKeys.insert({keyCode, modifiers});
}

int FakeHotKeys::pressedForAnother() { return sharedPresses; }

void FakeHotKeys::refuseHandlers(bool areRefused) { areHandlersRefused = areRefused; }

void FakeHotKeys::clear() {
    taken.clear();
    sharedKeys.clear();
    sharedPresses = 0;
    requests.clear();
    areHandlersRefused = false;
}

std::vector<std::string> FakeHotKeys::takeRequests() { return std::exchange(requests, {}); }

std::size_t FakeHotKeys::held() { return handlers.size() + hotKeys.size(); }

}  // namespace kovra

extern "C" {

EventTargetRef GetApplicationEventTarget() { return &application; }

OSStatus InstallEventHandler(EventTargetRef target, EventHandlerUPP handler, ItemCount count,
                             const EventTypeSpec* types, void* context, EventHandlerRef* installed) {
    if (target != &application) refuse("a target that is not ours");
    std::string request = "install for";
    for (ItemCount i = 0; i < count; ++i) {
        request += " " + hexadecimal(types[i].eventClass) + "/" + std::to_string(types[i].eventKind);
    }
    requests.push_back(request + (context == nullptr ? "" : " with a context"));
    if (areHandlersRefused) return refused;
    handlers.push_back(std::make_unique<OpaqueEventHandlerRef>(OpaqueEventHandlerRef{handler, context, {}}));
    for (ItemCount i = 0; i < count; ++i) handlers.back()->kinds.emplace(types[i].eventClass, types[i].eventKind);
    *installed = handlers.back().get();
    return noErr;
}

OSStatus RemoveEventHandler(EventHandlerRef handler) {
    requests.emplace_back("remove");
    drop(handlers, handler);
    return noErr;
}

OSStatus RegisterEventHotKey(UInt32 keyCode, UInt32 modifiers, EventHotKeyID id, EventTargetRef target,
                             OptionBits options, EventHotKeyRef* registered) {
    if (target != &application) refuse("a target that is not ours");
    requests.push_back("register " + hexadecimal(keyCode) + "+" + hexadecimal(modifiers) + " as " +
                       hexadecimal(id.signature) + "/" + std::to_string(id.id) + ", options " +
                       std::to_string(options));
    if (taken.contains({keyCode, modifiers})) return eventHotKeyExistsErr;
    hotKeys.push_back(std::make_unique<OpaqueEventHotKeyRef>(OpaqueEventHotKeyRef{keyCode, modifiers}));
    *registered = hotKeys.back().get();
    return noErr;
}

OSStatus UnregisterEventHotKey(EventHotKeyRef hotKey) {
    requests.emplace_back("unregister");
    drop(hotKeys, hotKey);
    return noErr;
}
}
