#include "BLE_kovra/platform/posix/PosixProcessRunner.h"

#include "BLE_kovra/platform/posix/OutputPipe.h"
#include "BLE_kovra/platform/posix/Refusal.h"

namespace kovra {

std::optional<std::string> PosixProcessRunner::output(const Command& command) {
    if (loop_.isStopped()) return std::nullopt;
    auto pipe = OutputPipe::open();
    if (!pipe) return std::nullopt;
    Spawn how;
    pipe->giveTo(how);
    const auto program = ChildProcess::start(how, command.executable, command.arguments);
    if (!program) return std::nullopt;
    pipe->closeWritingEnd();

    std::string text;
    bool hasAll = false;
    std::unique_ptr<DescriptorLoop::Watch> reading;
    reading = loop_.watch(pipe->descriptor(), [&] {
        hasAll = !pipe->read(text);
        if (!hasAll && text.size() <= longest_) reading->rearm();
    });
    bool hasEnded = false;
    const auto ending = loop_.watch(program->descriptor(), [&] {
        program->reap();
        hasEnded = true;
    });
    loop_.runUntil([&] { return (hasAll && hasEnded) || text.size() > longest_; });
    if (text.size() > longest_) {
        // After the pipe is closed, any other process that writes to it gets SIGPIPE.
        reading.reset();
        pipe.reset();
        program->terminate();
        loop_.runUntil([&] { return hasEnded; });
        return std::nullopt;
    }
    if (loop_.isStopped()) return std::nullopt;
    return text;
}

Outcome PosixProcessRunner::start(const Command& command) {
    Spawn how;
    const int error = started_.start(how, command.executable, command.arguments);
    return error == 0 ? Outcome::success() : refusal(error);
}

}  // namespace kovra
