#pragma once

#include <functional>

struct dispatch_source_s;

namespace kovra {

// Receives a signal of the process on the main queue, in place of the signal's default action. Child processes that are
// started meanwhile get the default action back.
class DispatchSignal {
  public:
    DispatchSignal(int number, std::function<void()> received);
    ~DispatchSignal();
    DispatchSignal(const DispatchSignal&) = delete;
    DispatchSignal& operator=(const DispatchSignal&) = delete;

  private:
    std::function<void()> received_;
    dispatch_source_s* source_;
};

}  // namespace kovra
