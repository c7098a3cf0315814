#pragma once

#include <functional>

struct dispatch_source_s;

namespace kovra {

// A signal of the process, heard on the main queue in place of what the system does at it. Children that are started
// meanwhile have the system's way again.
class DispatchSignal {
  public:
    DispatchSignal(int number, std::function<void()> heard);
    ~DispatchSignal();
    DispatchSignal(const DispatchSignal&) = delete;
    DispatchSignal& operator=(const DispatchSignal&) = delete;

  private:
    std::function<void()> heard_;
    dispatch_source_s* source_;
};

}  // namespace kovra
