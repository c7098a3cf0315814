#include <CoreFoundation/CoreFoundation.h>

#include <chrono>

#include "BLE_kovra/platform/macos/loop/CFDescriptorLoop.h"
#include "BLE_kovra/platform/macos/loop/DispatchMainQueue.h"
#include "BLE_kovra/platform/macos/loop/EventQueue.h"
#include "BLE_kovra/platform/posix/PosixProcessRunner.h"
#include "tests/contracts/ProcessRunnerContract.h"
#include "tests/support/posix/ScriptedPrograms.h"

namespace kovra {
namespace {

// A program without AppKit has no events, only the run loop.
class NoEvents : public EventQueue {
  public:
    void sendNextEvent() override { CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.05, true); }
    void wake() override {}
};

class CFDescriptorLoopOnMacDriver : public ScriptedPrograms {
  public:
    ProcessRunner& processes() { return processes_; }
    MainQueue& queue() { return queue_; }
    void terminate() { queue_.stop(); }
    bool hasRun(const Command&) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (!havePrinted() && std::chrono::steady_clock::now() < end) events_.sendNextEvent();
        return havePrinted();
    }

  private:
    DispatchMainQueue queue_;
    NoEvents events_;
    CFDescriptorLoop loop_{queue_, events_};
    PosixProcessRunner processes_{loop_};
};

INSTANTIATE_TYPED_TEST_SUITE_P(CFDescriptorLoopOnMac, ProcessRunnerContract, CFDescriptorLoopOnMacDriver);

}  // namespace
}  // namespace kovra
