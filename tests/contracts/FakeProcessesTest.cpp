#include "tests/contracts/ProcessRunnerContract.h"

#include <algorithm>

#include "tests/fakes/FakeMainQueue.h"
#include "tests/fakes/FakeProcesses.h"

namespace kovra {
namespace {

class FakeProcessesDriver {
  public:
    FakeProcessesDriver() {
        processes_.meanwhile = [this] { queue_.run(); };
    }
    ProcessRunner& processes() { return processes_; }
    MainQueue& queue() { return queue_; }
    void terminate() {
        queue_.stop();
        processes_.terminate();
    }

    Command printing(const std::string& text) {
        processes_.outputs["/bin/printing"] = text;
        return {"/bin/printing", {text}};
    }
    Command working() {
        processes_.outputs["/bin/working"] = "done";
        return {"/bin/working", {}};
    }
    Command missing() {
        processes_.reasonToFail = "No such file or directory";
        return {"/bin/missing", {}};
    }
    bool hasRun(const Command& program) const { return std::ranges::count(processes_.started, program) == 1; }

  private:
    FakeMainQueue queue_;
    FakeProcesses processes_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(FakeProcesses, ProcessRunnerContract, FakeProcessesDriver);

}  // namespace
}  // namespace kovra
