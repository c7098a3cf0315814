#include "BLE_kovra/platform/posix/OutputPipe.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "BLE_kovra/platform/posix/Spawn.h"

namespace kovra {

std::unique_ptr<OutputPipe> OutputPipe::open() {
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0) return nullptr;
    for (const int end : ends) ::fcntl(end, F_SETFD, FD_CLOEXEC);
    ::fcntl(ends[0], F_SETFL, O_NONBLOCK);
    return std::unique_ptr<OutputPipe>(new OutputPipe(ends[0], ends[1]));
}

void OutputPipe::giveTo(Spawn& program) const {
    program.give(writing_.number(), STDOUT_FILENO);
    program.give(writing_.number(), STDERR_FILENO);
}

bool OutputPipe::read(std::string& text) const {
    // 64 KiB, the usual capacity of a pipe. One call reads no more than that, so that a program that writes without
    // pause does not block the loop.
    std::array<char, 65536> piece;  // NOLINT(cppcoreguidelines-pro-type-member-init): read() fills it
    const ssize_t count = ::read(reading_.number(), piece.data(), piece.size());
    if (count > 0) text.append(piece.data(), static_cast<std::size_t>(count));
    return count > 0 || (count < 0 && errno == EAGAIN);
}

}  // namespace kovra
