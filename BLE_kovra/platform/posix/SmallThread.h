#pragma once

#include <pthread.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace kovra {

// Starts a thread that runs the work. The work must not throw. Returns nothing if no thread can be started. The caller
// joins or detaches the thread. Its stack is small, because the process keeps the pages that the stack has used. The
// usual stack of 8 MiB may become resident as huge pages.
inline std::optional<pthread_t> startSmallThread(std::function<void()> work) {
    constexpr std::size_t stackSize = 256 * 1024;  // in bytes; several times what reading or saving a file needs
    pthread_attr_t attributes;
    ::pthread_attr_init(&attributes);
    ::pthread_attr_setstacksize(&attributes, stackSize);
    auto owned = std::make_unique<std::function<void()>>(std::move(work));
    const auto run = [](void* context) -> void* {
        const std::unique_ptr<std::function<void()>> its(static_cast<std::function<void()>*>(context));
        if (its) (*its)();
        return nullptr;
    };
    pthread_t thread{};
    const int error = ::pthread_create(&thread, &attributes, run, owned.get());
    ::pthread_attr_destroy(&attributes);
    if (error != 0) return std::nullopt;
    static_cast<void>(owned.release());  // now the thread owns it
    return thread;
}

}  // namespace kovra
