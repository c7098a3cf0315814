#include "BLE_kovra/platform/macos/loop/ApplicationEnd.h"

#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <thread>
#include <utility>

#include "BLE_kovra/platform/Application.h"
#include "BLE_kovra/platform/macos/loop/DispatchMainQueue.h"

namespace kovra {

namespace {

ApplicationDelegate* running = nullptr;
DispatchMainQueue* mainQueue = nullptr;
std::thread::id mainThread;
std::terminate_handler previousTerminateHandler = nullptr;

[[noreturn]] void notifyAndAbort() {
    if (std::this_thread::get_id() != mainThread) {
        // This is a thread of the system, but the delegate expects the main thread. So give the main thread a second to
        // end the program. After that, call the delegate here, because the trackpad must be unmuted.
        constexpr unsigned timeout = 1;  // seconds
        mainQueue->async([] { notifyAndAbort(); });
        ::sleep(timeout);
    }
    ApplicationEnd::notify();
    if (previousTerminateHandler != nullptr) previousTerminateHandler();
    std::abort();
}

}  // namespace

void ApplicationEnd::expect(ApplicationDelegate& delegate, DispatchMainQueue& queue) {
    running = &delegate;
    mainQueue = &queue;
    mainThread = std::this_thread::get_id();
    previousTerminateHandler = std::set_terminate(notifyAndAbort);
    static_cast<void>(std::atexit(notify));
}

ApplicationDelegate* ApplicationEnd::delegate() { return running; }

void ApplicationEnd::notify() {
    ApplicationDelegate* delegate = std::exchange(running, nullptr);
    if (delegate == nullptr) return;
    mainQueue->stop();
    delegate->applicationWillTerminate();
}

}  // namespace kovra
