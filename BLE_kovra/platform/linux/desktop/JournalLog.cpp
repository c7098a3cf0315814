#include "BLE_kovra/platform/linux/desktop/JournalLog.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <utility>

#include "BLE_kovra/platform/posix/FileDescriptor.h"

namespace kovra {

namespace {

constexpr const char* identifier = "ble-kovra";
// Every log line reports a failure after which the program continues. An error that ends the program is written to
// standard error instead.
constexpr int priority = LOG_WARNING;
constexpr int timeoutMilliseconds = 100;
constexpr timeval sendTimeout{0, timeoutMilliseconds * 1000L};

bool sendDatagram(const std::string& path, std::string_view datagram) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) return false;
    std::ranges::copy(path, address.sun_path);
    const FileDescriptor socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (!socket.isOpen()) return false;
    ::setsockopt(socket.number(), SOL_SOCKET, SO_SNDTIMEO, &sendTimeout, sizeof sendTimeout);
    ssize_t sent;
    do {
        sent = ::sendto(socket.number(), datagram.data(), datagram.size(), MSG_NOSIGNAL,
                        reinterpret_cast<const sockaddr*>(&address), sizeof address);
    } while (sent < 0 && errno == EINTR);
    return sent == static_cast<ssize_t>(datagram.size());
}

// The length of the message (64 bits, little-endian) precedes the message, so that it may contain line feeds.
std::string journalEntry(std::string_view line) {
    std::string entry = "PRIORITY=" + std::to_string(priority) + "\nSYSLOG_IDENTIFIER=" + identifier + "\nMESSAGE\n";
    for (unsigned bits = 0; bits < 64; bits += 8) {
        entry += static_cast<char>(static_cast<std::uint64_t>(line.size()) >> bits & 0xFFU);
    }
    return entry.append(line).append("\n");
}

std::string syslogEntry(std::string_view line) {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    ::localtime_r(&now, &parts);
    // The protocol requires English names. strftime() would use those of the user's language.
    constexpr std::string_view months = "JanFebMarAprMayJunJulAugSepOctNovDec";
    const auto month = static_cast<std::size_t>(parts.tm_mon);
    std::string time(32, '\0');
    time.resize(std::strftime(time.data(), time.size(), " %e %H:%M:%S ", &parts));
    std::string entry = "<" + std::to_string(LOG_USER | priority) + ">";
    entry.append(months.substr(month * 3, 3)).append(time).append(identifier);
    return entry.append("[").append(std::to_string(::getpid())).append("]: ").append(line);
}

// systemd sets JOURNAL_STREAM to the device number and the inode number of the stream that it has connected to the
// journal.
bool standardErrorIsJournal() {
    const char* stream = std::getenv("JOURNAL_STREAM");
    struct stat status{};
    if (stream == nullptr || ::fstat(STDERR_FILENO, &status) != 0) return false;
    return std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino) == stream;
}

// Returns whether standard error accepts a write without blocking. A stopped terminal or a full pipe does not.
bool standardErrorTakesMore() {
    pollfd standardError{STDERR_FILENO, POLLOUT, 0};
    int ready;
    do {
        ready = ::poll(&standardError, 1, timeoutMilliseconds);
    } while (ready < 0 && errno == EINTR);
    return ready > 0;
}

// Writes a line of at most PIPE_BUF bytes in one piece, so that lines of several programs do not mix. Ignores errors.
void writeToStandardError(std::string line) {
    line += '\n';
    std::string_view rest = line;
    while (!rest.empty() && standardErrorTakesMore()) {
        // A pipe that is ready for writing accepts PIPE_BUF bytes without blocking.
        const ssize_t written = ::write(STDERR_FILENO, rest.data(), std::min<std::size_t>(rest.size(), PIPE_BUF));
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return;
        rest.remove_prefix(static_cast<std::size_t>(written));
    }
}

}  // namespace

JournalLog::JournalLog(std::string journal, std::string syslog)
    : journal_(std::move(journal)), syslog_(std::move(syslog)) {}

void JournalLog::log(std::string_view line) {
    std::string oneLine(line);
    std::ranges::replace(oneLine, '\n', ' ');
    const bool logged = sendDatagram(journal_, journalEntry(line)) || sendDatagram(syslog_, syslogEntry(oneLine));
    if (!logged || !standardErrorIsJournal()) writeToStandardError(std::move(oneLine));
}

}  // namespace kovra
