#include "BLE_kovra/platform/posix/ReleasedPrograms.h"

#include <cerrno>
#include <utility>

namespace kovra {

int ReleasedPrograms::start(Spawn& how, const std::string& executable, const std::vector<std::string>& arguments) {
    if (loop_.isStopped()) return ECANCELED;
    how.setNewSession();
    auto process = ChildProcess::start(how, executable, arguments);
    if (!process) return errno;
    process->release();
    const auto program = running_.insert(running_.end(), Program{std::move(process), nullptr});
    program->end = loop_.watch(program->process->descriptor(), [this, program] {
        program->process->reap();
        running_.erase(program);
    });
    return 0;
}

}  // namespace kovra
