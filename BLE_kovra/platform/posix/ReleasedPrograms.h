#pragma once

#include <list>
#include <memory>
#include <string>
#include <vector>

#include "BLE_kovra/platform/posix/ChildProcess.h"
#include "BLE_kovra/platform/posix/DescriptorLoop.h"

namespace kovra {

// Starts programs that survive this process, and reaps those that end while it runs.
class ReleasedPrograms {
  public:
    explicit ReleasedPrograms(DescriptorLoop& loop) : loop_(loop) {}

    // Returns 0 or the system's error; ECANCELED once the loop is stopped.
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
