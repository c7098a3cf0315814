#pragma once

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/posix/TempFolder.h"

namespace kovra {

// The socket of a log daemon, which receives datagrams.
class LogSocket {
  public:
    explicit LogSocket(const std::string& path) : socket_(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un address = addressOf(path);
        if (::bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
            throw std::runtime_error("no socket at " + path);
        }
    }
    LogSocket(const LogSocket&) = delete;
    LogSocket& operator=(const LogSocket&) = delete;
    ~LogSocket() { ::close(socket_); }

    std::vector<std::string> datagrams() {
        std::vector<std::string> all;
        std::string one(1 << 20, '\0');
        for (;;) {
            const ssize_t size = ::recv(socket_, one.data(), one.size(), MSG_DONTWAIT);
            if (size < 0) return all;
            all.push_back(one.substr(0, static_cast<std::size_t>(size)));
        }
    }

    // Sends to a socket without a reader until its buffer is full.
    static void fill(const std::string& path) {
        const int sender = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        const sockaddr_un address = addressOf(path);
        while (::sendto(sender, "x", 1, MSG_DONTWAIT, reinterpret_cast<const sockaddr*>(&address), sizeof address) ==
               1) {
        }
        ::close(sender);
    }

  private:
    static sockaddr_un addressOf(const std::string& path) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        if (path.copy(address.sun_path, sizeof address.sun_path - 1) != path.size())
            throw std::runtime_error("too long");
        return address;
    }

    int socket_;
};

// Parses an entry in the journal's native protocol, strictly by its documentation. The result is empty if the entry is
// invalid.
inline std::map<std::string, std::string> journalFields(const std::string& datagram) {
    std::map<std::string, std::string> fields;
    for (std::size_t i = 0; i < datagram.size();) {
        const std::size_t lineEnd = datagram.find('\n', i);
        if (lineEnd == std::string::npos) return {};
        const std::string line = datagram.substr(i, lineEnd - i);
        i = lineEnd + 1;
        if (const std::size_t equals = line.find('='); equals != std::string::npos) {
            if (!fields.emplace(line.substr(0, equals), line.substr(equals + 1)).second) return {};
            continue;
        }
        if (datagram.size() - i < 8) return {};
        std::uint64_t size = 0;
        for (std::size_t byte = 8; byte-- > 0;) size = size << 8 | static_cast<unsigned char>(datagram[i + byte]);
        i += 8;
        if (datagram.size() - i <= size || datagram[i + size] != '\n') return {};
        if (!fields.emplace(line, datagram.substr(i, size)).second) return {};
        i += size + 1;
    }
    return fields;
}

// An object that redirects the standard error of this process to a file during its lifetime.
class StandardError {
  public:
    explicit StandardError(const std::string& file)
        : StandardError(file, ::open(file.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0600)) {}
    // Takes ownership of the descriptor.
    StandardError(std::string file, int descriptor) : file_(std::move(file)), before_(::dup(STDERR_FILENO)) {
        if (descriptor < 0 || before_ < 0) throw std::runtime_error("no standard error");
        ::dup2(descriptor, STDERR_FILENO);
        ::close(descriptor);
    }
    StandardError(const StandardError&) = delete;
    StandardError& operator=(const StandardError&) = delete;
    ~StandardError() {
        ::dup2(before_, STDERR_FILENO);
        ::close(before_);
    }

    std::string text() const { return readFile(file_); }

  private:
    std::string file_;
    int before_;
};

}  // namespace kovra
