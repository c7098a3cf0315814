#include "BLE_kovra/platform/linux/wire/LineSocket.h"

#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <utility>

namespace kovra {

namespace {

constexpr int nonBlocking = MSG_DONTWAIT | MSG_NOSIGNAL;

}  // namespace

std::optional<std::vector<std::string>> receiveLines(int socket, LineReader& reader) {
    std::array<char, 16'384> buffer{};
    const ssize_t count = ::recv(socket, buffer.data(), buffer.size(), nonBlocking);
    if (count > 0) return reader.feed({buffer.data(), static_cast<std::size_t>(count)});
    if (count < 0 && errno == EAGAIN) return std::vector<std::string>();
    return std::nullopt;
}

bool sendLine(int socket, std::string_view line) {
    // A local socket accepts a short line as a whole or not at all.
    return ::send(socket, line.data(), line.size(), nonBlocking) == static_cast<ssize_t>(line.size());
}

Outbox::State Outbox::flush(int socket) {
    for (;;) {
        if (sent_ == sending_.size()) {
            if (waiting_.empty()) return State::empty;
            sending_ = std::move(waiting_.extract(waiting_.begin()).mapped());
            sent_ = 0;
        }
        const ssize_t count = ::send(socket, sending_.data() + sent_, sending_.size() - sent_, nonBlocking);
        if (count < 0) return errno == EAGAIN ? State::waiting : State::broken;
        sent_ += static_cast<std::size_t>(count);
    }
}

}  // namespace kovra
