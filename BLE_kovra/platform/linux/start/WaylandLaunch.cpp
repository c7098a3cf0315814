#include "BLE_kovra/platform/linux/start/WaylandLaunch.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <utility>

#include "BLE_kovra/platform/linux/start/Deadline.h"

namespace kovra {

namespace {

// The objects of the connection. The protocol gives the first one its number; the client chooses the others.
enum Object : std::uint32_t { display = 1, registry, globalsAnnounced, shell, requestsHandled };

// The requests, and the events of the same numbers below, by the order in which the protocols define them.
enum Request : std::uint32_t { displaySync = 0, displayGetRegistry = 1, registryBind = 0, shellSetStartupID = 1 };
enum Event : std::uint32_t { displayError = 0, registryGlobal = 0, callbackDone = 0 };

constexpr std::string_view shellInterface = "gtk_shell1";
constexpr std::size_t headerSize = 8;
constexpr std::size_t longestMessage = 4096;  // of the protocol
constexpr std::size_t longestID = 1024;

// A request. Numbers have the byte order of the machine.
class Message {
  public:
    Message(std::uint32_t object, Request opcode) : opcode_(opcode) { number(object).number(0); }

    Message& number(std::uint32_t value) {
        std::array<char, sizeof value> bytes{};
        std::memcpy(bytes.data(), &value, sizeof value);
        bytes_.append(bytes.data(), bytes.size());
        return *this;
    }
    // A text is preceded by its size with the final zero, and padded to a multiple of four bytes.
    Message& text(std::string_view value) {
        number(static_cast<std::uint32_t>(value.size() + 1));
        bytes_.append(value).append(4 - value.size() % 4, '\0');
        return *this;
    }
    std::string bytes() const {
        std::string complete = bytes_;
        const std::uint32_t sizeAndOpcode = static_cast<std::uint32_t>(complete.size()) << 16U | opcode_;
        std::memcpy(complete.data() + sizeof(std::uint32_t), &sizeAndOpcode, sizeof sizeAndOpcode);
        return complete;
    }

  private:
    std::uint32_t opcode_;
    std::string bytes_;
};

std::uint32_t numberAt(std::string_view bytes, std::size_t position) {
    std::uint32_t value = 0;
    if (bytes.size() >= position + sizeof value) std::memcpy(&value, bytes.data() + position, sizeof value);
    return value;
}

// Returns the text at this position of a message, without its final zero.
std::string_view textAt(std::string_view bytes, std::size_t position) {
    const std::uint32_t size = numberAt(bytes, position);
    position += sizeof size;
    if (size == 0 || bytes.size() < position || bytes.size() - position < size) return {};
    return bytes.substr(position, size - 1);
}

std::optional<sockaddr_un> addressOf(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof address.sun_path) return std::nullopt;
    std::copy(path.begin(), path.end(), address.sun_path);
    return address;
}

}  // namespace

void WaylandLaunch::end(const std::string& id) {
    if (id.size() > longestID) return;
    ids_.push_back(id);
    if (!socket_) connect();
}

void WaylandLaunch::finish() {
    const Deadline deadline;
    while (socket_ && deadline.waitFor(socket_->number())) receive();
}

void WaylandLaunch::connect() {
    const auto address = addressOf(waylandSocket());
    socket_ = std::make_unique<FileDescriptor>(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const bool isConnected =
        address && socket_->isOpen() &&
        ::connect(socket_->number(), reinterpret_cast<const sockaddr*>(&*address), sizeof *address) == 0;
    if (!isConnected) return disconnect();
    watch_ = loop_.watch(socket_->number(), [this] { receive(); });
    send(Message(display, displayGetRegistry).number(registry).bytes() +
         Message(display, displaySync).number(globalsAnnounced).bytes());
}

void WaylandLaunch::disconnect() {
    watch_.reset();
    socket_.reset();
    received_.clear();
    shell_ = 0;
    if (std::exchange(areSent_, false) && !ids_.empty()) return connect();  // for those that were added meanwhile
    ids_.clear();
}

void WaylandLaunch::receive() {
    std::array<char, longestMessage> buffer{};
    const ssize_t size = ::recv(socket_->number(), buffer.data(), buffer.size(), 0);
    const bool isEmpty = size < 0 && (errno == EAGAIN || errno == EINTR);
    if (size <= 0 && !isEmpty) return disconnect();
    if (size > 0) received_.append(buffer.data(), static_cast<std::size_t>(size));
    if (handleMessages())
        watch_->rearm();
    else
        disconnect();
}

bool WaylandLaunch::handleMessages() {
    std::string_view left = received_;
    while (left.size() >= headerSize) {
        const std::uint32_t sizeAndOpcode = numberAt(left, sizeof(std::uint32_t));
        const std::size_t size = sizeAndOpcode >> 16U;
        if (size < headerSize || size > longestMessage) return false;
        if (left.size() < size) break;
        if (!handle(numberAt(left, 0), sizeAndOpcode & 0xFFFFU, left.substr(headerSize, size - headerSize)))
            return false;
        left.remove_prefix(size);
    }
    received_.erase(0, received_.size() - left.size());
    return true;
}

bool WaylandLaunch::handle(std::uint32_t object, std::uint32_t opcode, std::string_view arguments) {
    if (object == display && opcode == displayError) return false;
    if (object == registry && opcode == registryGlobal) {
        if (textAt(arguments, sizeof(std::uint32_t)) == shellInterface) shell_ = numberAt(arguments, 0);
    } else if (object == globalsAnnounced && opcode == callbackDone) {
        if (shell_ == 0) return false;
        constexpr std::uint32_t version = 1;
        std::string requests =
            Message(registry, registryBind).number(shell_).text(shellInterface).number(version).number(shell).bytes();
        for (const std::string& id : std::exchange(ids_, {}))
            requests += Message(shell, shellSetStartupID).text(id).bytes();
        send(requests + Message(display, displaySync).number(requestsHandled).bytes());
        areSent_ = true;
    } else if (object == requestsHandled && opcode == callbackDone) {
        return false;
    }
    return true;
}

// A new connection accepts far more bytes than these. If it accepts fewer, the compositor reports an error or nothing.
void WaylandLaunch::send(const std::string& messages) {
    static_cast<void>(::send(socket_->number(), messages.data(), messages.size(), MSG_NOSIGNAL));
}

std::string waylandSocket() {
    const char* name = std::getenv("WAYLAND_DISPLAY");
    if (name == nullptr || *name == '\0') return {};
    if (*name == '/') return name;
    const char* folder = std::getenv("XDG_RUNTIME_DIR");
    return folder == nullptr || *folder != '/' ? std::string() : std::string(folder) + '/' + name;
}

}  // namespace kovra
