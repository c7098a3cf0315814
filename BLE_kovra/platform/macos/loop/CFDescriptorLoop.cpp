#include "BLE_kovra/platform/macos/loop/CFDescriptorLoop.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include "BLE_kovra/platform/macos/foundation/CFHandle.h"
#include "BLE_kovra/platform/macos/loop/DispatchMainQueue.h"
#include "BLE_kovra/platform/macos/loop/EventQueue.h"

namespace kovra {

class CFDescriptorLoop::DescriptorWatch : public DescriptorLoop::Watch {
  public:
    DescriptorWatch(CFDescriptorLoop& loop, int number, std::function<void()> readable)
        : loop_(loop),
          readable_(std::make_shared<std::function<void()>>(std::move(readable))),
          descriptor_(make(number)) {
        if (!descriptor_) throw std::system_error(ENOMEM, std::generic_category(), "descriptor");
        const CFHandle source(CFFileDescriptorCreateRunLoopSource(kCFAllocatorDefault, descriptor_.get(), 0));
        CFRunLoopAddSource(CFRunLoopGetMain(), source.get(), kCFRunLoopCommonModes);
        DescriptorWatch::rearm();
    }
    ~DescriptorWatch() override { CFFileDescriptorInvalidate(descriptor_.get()); }

    void rearm() override { CFFileDescriptorEnableCallBacks(descriptor_.get(), kCFFileDescriptorReadCallBack); }

  private:
    CFHandle<CFFileDescriptorRef> make(int number) {
        const CFFileDescriptorContext context{0, this, nullptr, nullptr, nullptr};
        return CFHandle(CFFileDescriptorCreate(kCFAllocatorDefault, number, false, becameReadable, &context));
    }
    static void becameReadable(CFFileDescriptorRef, CFOptionFlags, void* context) noexcept {
        if (context == nullptr) return;
        const CFDescriptorLoop& loop = static_cast<DescriptorWatch*>(context)->loop_;
        const auto readable = static_cast<DescriptorWatch*>(context)->readable_;  // a copy: the call may end the watch
        (*readable)();
        if (loop.runs_ > 0) loop.events_.wake();  // what runUntil() waits for may have happened
    }

    const CFDescriptorLoop& loop_;
    std::shared_ptr<std::function<void()>> readable_;
    CFHandle<CFFileDescriptorRef> descriptor_;
};

std::unique_ptr<DescriptorLoop::Watch> CFDescriptorLoop::watch(int descriptor, std::function<void()> readable) {
    return std::make_unique<DescriptorWatch>(*this, descriptor, std::move(readable));
}

void CFDescriptorLoop::runUntil(const std::function<bool()>& done) {
    ++runs_;
    while (!isStopped() && !done()) events_.sendNextEvent();
    --runs_;
    if (runs_ > 0) events_.wake();  // this call may have taken the event for which the one around it waits
}

bool CFDescriptorLoop::isStopped() const { return queue_.isStopped(); }

}  // namespace kovra
