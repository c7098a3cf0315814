#include "helper/Notifier.h"

#include <cerrno>
#include <cstddef>

namespace kovra::helper {

Notifier::Notifier(const char* address) {
    const std::string_view name = address == nullptr ? "" : address;
    const bool isAbstract = name.starts_with('@');
    if ((!isAbstract && !name.starts_with('/')) || name.size() >= sizeof address_.sun_path) return;
    address_.sun_family = AF_UNIX;
    name.copy(address_.sun_path, name.size());
    if (isAbstract) address_.sun_path[0] = '\0';
    // The name of an abstract socket has no null character at its end.
    size_ = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size() + (isAbstract ? 0 : 1));
    socket_ = Descriptor(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
}

Notifier::Result Notifier::notify(std::string_view state) const {
    if (!socket_.isOpen()) return Result::failed;
    const auto* address = reinterpret_cast<const sockaddr*>(&address_);
    const ssize_t sent =
        ::sendto(socket_.number(), state.data(), state.size(), MSG_DONTWAIT | MSG_NOSIGNAL, address, size_);
    if (sent >= 0) return Result::sent;
    return errno == EAGAIN || errno == ENOBUFS ? Result::full : Result::failed;
}

}  // namespace kovra::helper
