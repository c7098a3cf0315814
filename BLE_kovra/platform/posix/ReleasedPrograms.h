#pragma once

#include <list>
#include <memory>
#include <string>
#include <vector>

#include "BLE_kovra/platform/posix/ChildProcess.h"
#include "BLE_kovra/platform/posix/DescriptorLoop.h"

namespace kovra {

// Starts programs that keep running after this process has ended. Those that end earlier are reaped.
class ReleasedPrograms {
  public:
    explicit ReleasedPrograms(DescriptorLoop& loop) : loop_(loop) {}

    // Returns 0 or the error number: ECANCELED once the loop is stopped, otherwise the system's.
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
