#pragma once

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <stdexcept>
#include <string>

#include "helper/Descriptor.h"
#include "tests/helper/WaitUntil.h"

namespace kovra::helper {

// The socket on which a service manager receives notifications. A name that begins with "@" is that of an abstract
// socket.
class ServiceManager {
  public:
    explicit ServiceManager(const std::string& name) : socket_(newSocket()) {
        name.copy(address_.sun_path, name.size());
        if (name.starts_with('@')) address_.sun_path[0] = '\0';
        size_ = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
        if (::bind(socket_.number(), address(), size_) != 0) throw std::runtime_error("no socket");
    }

    // Fills the queue of the socket, as any other process may. One process may only send a limited amount by one
    // socket, so each message has its own.
    void fill() const {
        constexpr int most = 100'000;
        for (int count = 0; count < most; ++count) {
            const Descriptor other = newSocket();
            if (::sendto(other.number(), "X=1", 3, MSG_DONTWAIT, address(), size_) < 0) return;
        }
        throw std::runtime_error("the queue has no end");
    }
    // Receives messages until this one comes.
    bool receives(const std::string& text) const {
        return waitUntil([&] { return receive() == text; });
    }
    // Returns the next message, or nothing if none is waiting.
    std::string receive() const {
        std::string message(200, ' ');
        const ssize_t length = ::recv(socket_.number(), message.data(), message.size(), 0);
        return length > 0 ? message.substr(0, static_cast<std::size_t>(length)) : std::string();
    }

  private:
    static Descriptor newSocket() {
        return Descriptor(::socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    }
    const sockaddr* address() const { return reinterpret_cast<const sockaddr*>(&address_); }

    sockaddr_un address_{.sun_family = AF_UNIX, .sun_path = ""};
    socklen_t size_ = 0;
    Descriptor socket_;
};

}  // namespace kovra::helper
