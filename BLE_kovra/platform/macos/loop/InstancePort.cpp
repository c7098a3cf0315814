#include "BLE_kovra/platform/macos/loop/InstancePort.h"

#include <utility>

#include "BLE_kovra/platform/macos/foundation/CFText.h"

namespace kovra {

namespace {

// Returns whether the message has reached the process that has the name. Nobody waits for a reply.
bool hasSent(CFStringRef name) {
    const CFHandle other(CFMessagePortCreateRemote(kCFAllocatorDefault, name));
    if (!other) return false;
    constexpr CFTimeInterval longest = 1;  // seconds, if the queue of the port is full
    return CFMessagePortSendRequest(other.get(), 0, nullptr, longest, 0, nullptr, nullptr) == kCFMessagePortSuccess;
}

}  // namespace

InstancePort::InstancePort(std::string_view name) : port_(nullptr) {
    const auto portName = cfText(name);
    CFMessagePortContext context{0, this, nullptr, nullptr, nullptr};
    port_ = CFHandle(CFMessagePortCreateLocal(kCFAllocatorDefault, portName.get(), received, &context, nullptr));
    isSecond_ = !port_ && hasSent(portName.get());
}

InstancePort::~InstancePort() {
    if (port_) CFMessagePortInvalidate(port_.get());
}

void InstancePort::listen(std::function<void()> asked) {
    asked_ = std::move(asked);
    if (!port_) return;
    const CFHandle source(CFMessagePortCreateRunLoopSource(kCFAllocatorDefault, port_.get(), 0));
    CFRunLoopAddSource(CFRunLoopGetMain(), source.get(), kCFRunLoopCommonModes);
}

CFDataRef InstancePort::received(CFMessagePortRef, SInt32, CFDataRef, void* context) noexcept {
    if (context != nullptr) static_cast<const InstancePort*>(context)->asked_();
    return nullptr;
}

}  // namespace kovra
