#pragma once

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

namespace kovra {

// A socket that accepts connections and never answers. During its lifetime the environment variable `variable` contains
// the address of this socket as that of a bus.
class SilentBus {
  public:
    explicit SilentBus(std::string variable) : variable_(std::move(variable)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::string name = "kovra-test-silent-bus-" + std::to_string(::getpid());
        std::memcpy(address.sun_path + 1, name.data(), name.size());
        const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
        EXPECT_EQ(::bind(listener_, reinterpret_cast<const sockaddr*>(&address), length), 0);
        EXPECT_EQ(::listen(listener_, 1), 0);
        ::setenv(variable_.c_str(), ("unix:abstract=" + name).c_str(), 1);
    }
    ~SilentBus() {
        ::unsetenv(variable_.c_str());
        ::close(listener_);
    }
    SilentBus(const SilentBus&) = delete;
    SilentBus& operator=(const SilentBus&) = delete;

  private:
    std::string variable_;
    int listener_ = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
};

}  // namespace kovra
