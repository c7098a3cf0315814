#include "tests/platform/macos/fakes/FakeMessagePorts.h"

#include <CoreFoundation/CoreFoundation.h>

#include <map>
#include <utility>

#include "tests/platform/macos/fakes/FakeObject.h"
#include "tests/platform/macos/fakes/FakeRunLoopSource.h"
#include "tests/platform/macos/fakes/FakeValues.h"

using kovra::fakeObject;
using kovra::FakeObject;
using kovra::FakeType;
using kovra::refuse;

struct __CFMessagePort : FakeObject {
    __CFMessagePort(std::string itsName, CFMessagePortCallBack callback, void* info)
        : FakeObject(FakeType::port), name(std::move(itsName)), received(callback), context(info) {}

    const std::string name;
    const CFMessagePortCallBack received;  // null if the port belongs to another process
    void* const context;
    bool isValid = true;
    std::size_t waiting = 0;  // messages
};

namespace {

enum class Other { hearing, deaf };

std::map<std::string, Other> otherProcesses;
std::map<std::string, __CFMessagePort*> ourPorts;
std::vector<std::string> sentMessages;

}  // namespace

namespace kovra {

void FakeMessagePorts::takeByAnother(const std::string& name) { otherProcesses[name] = Other::hearing; }

void FakeMessagePorts::takeByOneThatIsDeaf(const std::string& name) { otherProcesses[name] = Other::deaf; }

void FakeMessagePorts::clear() {
    otherProcesses.clear();
    sentMessages.clear();
}

bool FakeMessagePorts::sendFromAnother(const std::string& name) {
    const auto port = ourPorts.find(name);
    if (port == ourPorts.end()) return false;
    ++port->second->waiting;
    return true;
}

std::vector<std::string> FakeMessagePorts::takeSent() { return std::exchange(sentMessages, {}); }

}  // namespace kovra

extern "C" {

CFMessagePortRef CFMessagePortCreateLocal(CFAllocatorRef, CFStringRef name, CFMessagePortCallBack callback,
                                          CFMessagePortContext* context, Boolean*) {
    if (context->version != 0 || context->retain != nullptr || context->release != nullptr)
        refuse("a context that is not ours");
    const std::string text = kovra::textOf(name);
    if (otherProcesses.contains(text)) return nullptr;
    if (ourPorts.contains(text)) refuse("the name of a port that exists");
    return ourPorts[text] = new __CFMessagePort(text, callback, context->info);
}

CFMessagePortRef CFMessagePortCreateRemote(CFAllocatorRef, CFStringRef name) {
    const std::string text = kovra::textOf(name);
    return otherProcesses.contains(text) ? new __CFMessagePort(text, nullptr, nullptr) : nullptr;
}

SInt32 CFMessagePortSendRequest(CFMessagePortRef remote, SInt32, CFDataRef, CFTimeInterval, CFTimeInterval,
                                CFStringRef replyMode, CFDataRef*) {
    const auto& port = fakeObject<__CFMessagePort>(remote, FakeType::port);
    if (port.received != nullptr) refuse("to send a message to a port of this process");
    if (replyMode != nullptr) refuse("to wait for a reply, which nobody sends");
    if (otherProcesses.at(port.name) == Other::deaf) return kCFMessagePortSendTimeout;
    sentMessages.push_back(port.name);
    return kCFMessagePortSuccess;
}

void CFMessagePortInvalidate(CFMessagePortRef port) {
    auto& invalid = fakeObject<__CFMessagePort>(port, FakeType::port);
    invalid.isValid = false;
    if (invalid.received != nullptr) ourPorts.erase(invalid.name);
    kovra::removeSourcesOf(port);
}

CFRunLoopSourceRef CFMessagePortCreateRunLoopSource(CFAllocatorRef, CFMessagePortRef local, CFIndex) {
    return new __CFRunLoopSource(local, [port = &fakeObject<__CFMessagePort>(local, FakeType::port)] {
        if (!port->isValid || port->waiting == 0) return false;
        --port->waiting;
        port->received(port, 0, nullptr, port->context);
        return true;
    });
}
}
