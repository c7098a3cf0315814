#pragma once

#include <list>
#include <memory>
#include <string>
#include <vector>

#include "BLE_kovra/platform/posix/ChildProcess.h"
#include "BLE_kovra/platform/posix/DescriptorLoop.h"

namespace kovra {

// Programs that were started and let go: nothing that ends us ends them, and when they end while we run no zombie is
// left.
class ReleasedPrograms {
  public:
    explicit ReleasedPrograms(DescriptorLoop& loop) : loop_(loop) {}

    // 0, or the system's error. Once the loop is stopped nothing starts any more: ECANCELED.
    int start(Spawn& how, const std::string& executable, const std::vector<std::string>& arguments);

  private:
    struct Program {
        std::unique_ptr<ChildProcess> process;
        std::unique_ptr<DescriptorLoop::Watch> end;
    };

    DescriptorLoop& loop_;
    std::list<Program> running_;
};

}  // namespace kovra
