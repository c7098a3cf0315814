#pragma once

#include <functional>

struct dispatch_source_s;

namespace kovra {

// A handler that receives one signal of the process on the main queue, in place of the signal's default action. Child
// processes start with the default action (see Spawn).
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
