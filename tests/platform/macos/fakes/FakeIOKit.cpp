#include "tests/platform/macos/fakes/FakeIOKit.h"

#include <IOKit/hid/IOHIDManager.h>

#include <algorithm>
#include <deque>
#include <utility>

#include "tests/platform/macos/fakes/FakeRunLoop.h"
#include "tests/platform/macos/fakes/FakeValues.h"

using kovra::FakeInterface;
using kovra::FakeIOKit;
using kovra::FakeObject;
using kovra::fakeObject;
using kovra::FakeRunLoop;
using kovra::FakeType;
using kovra::refuse;

struct __IOHIDDevice : FakeObject {
    explicit __IOHIDDevice(FakeIOKit::Plugged of) : FakeObject(FakeType::device), interface(std::move(of)) {}
    const FakeIOKit::Plugged interface;
};

namespace {

constexpr IOReturn success = 0;
constexpr IOReturn failure = 5;
constexpr auto notPermitted = static_cast<IOReturn>(0xE00002E2);

struct Machine {
    std::vector<FakeIOKit::Plugged> attached;
    std::vector<IOHIDManagerRef> managers;
    std::vector<std::string> requests;
    std::map<io_service_t, std::weak_ptr<FakeInterface>> services;
    std::uint64_t lastNumber = 0x100000400;
    bool isListeningAllowed = true;
};

Machine machine;

io_service_t serviceOf(const FakeInterface& interface) {
    return interface.registry == FakeInterface::Registry::none ? MACH_PORT_NULL
                                                               : static_cast<io_service_t>(interface.number);
}

}  // namespace

struct __IOHIDManager : FakeObject, FakeRunLoop::Source {
    struct CallBack {
        IOHIDDeviceCallback function = nullptr;
        void* context = nullptr;
    };

    __IOHIDManager() : FakeObject(FakeType::manager) { machine.managers.push_back(this); }
    ~__IOHIDManager() override {
        std::erase(machine.managers, this);
        FakeRunLoop::remove(*this);
        for (const IOHIDDeviceRef device : devices) CFRelease(device);
        for (const auto& [isAttachment, device] : events) CFRelease(device);
    }

    bool firesIn(CFRunLoopMode in) const override { return mode != nullptr && FakeRunLoop::fires(mode, in); }
    bool hasEvents() const override { return !events.empty(); }
    void fire() override {
        const auto [isAttachment, device] = events.front();
        events.pop_front();
        const CallBack& callBack = isAttachment ? attached : removed;
        const IOReturn result = isAttachment && !machine.isListeningAllowed ? notPermitted : success;
        CFRetain(this);
        if (callBack.function != nullptr) callBack.function(callBack.context, result, this, device);
        CFRelease(device);
        if (references() == 1) refuse("that a manager loses its last reference while it calls back");
        CFRelease(this);
    }

    void add(const FakeIOKit::Plugged& interface) {
        auto* device = new __IOHIDDevice(interface);
        devices.push_back(device);
        events.emplace_back(true, static_cast<IOHIDDeviceRef>(const_cast<void*>(CFRetain(device))));
    }
    void drop(const FakeIOKit::Plugged& interface) {
        const auto found = std::ranges::find(devices, interface, &__IOHIDDevice::interface);
        if (found == devices.end()) return;
        events.emplace_back(false, *found);  // `events` now owns the reference
        devices.erase(found);
    }

    std::vector<IOHIDDeviceRef> devices;
    std::deque<std::pair<bool, IOHIDDeviceRef>> events;
    CallBack attached, removed;
    CFRunLoopMode mode = nullptr;
    bool isMatching = false;
};

namespace {

__IOHIDManager& managerOf(IOHIDManagerRef manager) { return fakeObject<__IOHIDManager>(manager, FakeType::manager); }

}  // namespace

namespace kovra {

FakeInterface::~FakeInterface() {
    for (const auto& [name, value] : properties) CFRelease(value);
}

void FakeInterface::set(const std::string& name, CFTypeRef owned) {
    if (const auto old = properties.extract(name)) CFRelease(old.mapped());
    properties.emplace(name, owned);
}

FakeIOKit::Plugged FakeIOKit::attach(Plugged interface) {
    interface->number = ++machine.lastNumber;
    machine.attached.push_back(interface);
    machine.services[serviceOf(*interface)] = interface;
    for (const IOHIDManagerRef manager : machine.managers) {
        if (manager->isMatching) manager->add(interface);
    }
    return interface;
}

void FakeIOKit::detach(const Plugged& interface) {
    if (std::erase(machine.attached, interface) == 0) return;
    for (const IOHIDManagerRef manager : machine.managers) manager->drop(interface);
}

void FakeIOKit::unplugAll() {
    while (!machine.attached.empty()) detach(Plugged(machine.attached.back()));
}

void FakeIOKit::allowListening(bool isAllowed) { machine.isListeningAllowed = isAllowed; }

std::vector<std::string> FakeIOKit::takeRequests() { return std::exchange(machine.requests, {}); }

void FakeIOKit::callWithoutContext() {
    for (const IOHIDManagerRef manager : machine.managers) {
        for (const auto& callBack : {manager->attached, manager->removed}) {
            callBack.function(nullptr, success, manager, manager->devices.empty() ? nullptr : manager->devices.front());
        }
    }
}

}  // namespace kovra

extern "C" {

kern_return_t IORegistryEntryGetRegistryEntryID(io_registry_entry_t entry, std::uint64_t* number) {
    const auto found = machine.services.find(entry);
    const auto interface = found == machine.services.end() ? nullptr : found->second.lock();
    if (!interface || interface->registry != FakeInterface::Registry::numbered) return failure;
    *number = interface->number;
    return KERN_SUCCESS;
}

io_service_t IOHIDDeviceGetService(IOHIDDeviceRef device) {
    return serviceOf(*fakeObject<__IOHIDDevice>(device, FakeType::device).interface);
}

CFTypeRef IOHIDDeviceGetProperty(IOHIDDeviceRef device, CFStringRef key) {
    const auto& properties = fakeObject<__IOHIDDevice>(device, FakeType::device).interface->properties;
    const auto found = properties.find(kovra::textOf(key));
    return found == properties.end() ? nullptr : found->second;
}

IOHIDManagerRef IOHIDManagerCreate(CFAllocatorRef, IOOptionBits options) {
    machine.requests.push_back("create " + std::to_string(options));
    return new __IOHIDManager;
}

void IOHIDManagerSetDeviceMatching(IOHIDManagerRef manager, CFDictionaryRef matching) {
    machine.requests.emplace_back(matching == nullptr ? "match all" : "match some");
    managerOf(manager).isMatching = true;
    for (const FakeIOKit::Plugged& interface : machine.attached) managerOf(manager).add(interface);
}

void IOHIDManagerRegisterDeviceMatchingCallback(IOHIDManagerRef manager, IOHIDDeviceCallback callback, void* context) {
    machine.requests.emplace_back("call for attached");
    managerOf(manager).attached = {callback, context};
}

void IOHIDManagerRegisterDeviceRemovalCallback(IOHIDManagerRef manager, IOHIDDeviceCallback callback, void* context) {
    machine.requests.emplace_back("call for removed");
    managerOf(manager).removed = {callback, context};
}

void IOHIDManagerScheduleWithRunLoop(IOHIDManagerRef manager, CFRunLoopRef loop, CFStringRef mode) {
    machine.requests.emplace_back(mode == kCFRunLoopCommonModes ? "schedule in the common modes"
                                                                : "schedule in one mode");
    if (loop != CFRunLoopGetMain()) refuse("a run loop that is not ours");
    if (managerOf(manager).mode != nullptr) refuse("to schedule a manager twice");
    managerOf(manager).mode = mode;
    FakeRunLoop::add(managerOf(manager));
}

IOReturn IOHIDManagerOpen(IOHIDManagerRef manager, IOOptionBits options) {
    managerOf(manager);
    machine.requests.push_back("open " + std::to_string(options));
    return machine.isListeningAllowed ? success : notPermitted;
}
}
