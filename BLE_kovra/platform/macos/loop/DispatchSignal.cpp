#include "BLE_kovra/platform/macos/loop/DispatchSignal.h"

#include <dispatch/dispatch.h>

#include <csignal>
#include <cstdint>
#include <utility>

namespace kovra {

DispatchSignal::DispatchSignal(int number, std::function<void()> received)
    : received_(std::move(received)),
      source_(::dispatch_source_create(DISPATCH_SOURCE_TYPE_SIGNAL, static_cast<std::uintptr_t>(number), 0,
                                       ::dispatch_get_main_queue())) {
    if (source_ == nullptr) return;
    ::dispatch_set_context(source_, this);
    ::dispatch_source_set_event_handler_f(
        source_, [](void* context) noexcept { static_cast<const DispatchSignal*>(context)->received_(); });
    ::dispatch_resume(source_);
    std::signal(number, SIG_IGN);  // the default action would end the process first
}

DispatchSignal::~DispatchSignal() {
    if (source_ == nullptr) return;
    ::dispatch_source_cancel(source_);
    ::dispatch_release(source_);
}

}  // namespace kovra
