#include "helper/session/ProcessStatus.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <system_error>

#include "helper/Descriptor.h"

namespace kovra::helper {

namespace {

// A process has up to 65,536 groups, whose line precedes NSpid. This is enough for thousands.
constexpr std::size_t longestStatus = 65'536;

// Returns the rest of the line that starts with "label:\t", or nothing if there is none. Each label occurs once at
// most, since the kernel escapes line feeds in the name of a process.
std::optional<std::string_view> field(std::string_view text, std::string_view label) {
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        if (line.starts_with(label) && line.substr(label.size()).starts_with(":\t")) {
            return line.substr(label.size() + 2);
        }
        text.remove_prefix(std::min(line.size() + 1, text.size()));
    }
    return std::nullopt;
}

// Removes the number at the start of the text, and the tab that follows it, and returns the number. Returns nothing if
// the text does not start with a number.
std::optional<std::uint32_t> takeNumber(std::string_view& text) {
    std::uint32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc()) return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    if (text.starts_with('\t')) text.remove_prefix(1);
    return value;
}

// Reads a file of /proc. Returns nothing if that fails, or if the file is longer than the longest status.
std::optional<std::string> contentOf(const std::string& path) {
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file.isOpen()) return std::nullopt;
    std::string text;
    std::array<char, 4096> part{};
    while (text.size() <= longestStatus) {
        const ssize_t size = ::read(file.number(), part.data(), part.size());
        if (size < 0) return std::nullopt;
        if (size == 0) return text;
        text.append(part.data(), static_cast<std::size_t>(size));
    }
    return std::nullopt;
}

}  // namespace

std::optional<ProcessStatus> parseProcessStatus(std::string_view text) {
    const auto name = field(text, "Name");
    auto parents = field(text, "PPid");
    auto users = field(text, "Uid");
    if (!name || !parents || !users) return std::nullopt;
    const auto parent = takeNumber(*parents);
    const auto real = takeNumber(*users);
    const auto effective = takeNumber(*users);
    if (!parent || !real || !effective) return std::nullopt;
    // A kernel without process namespaces does not write the line NSpid.
    const std::string_view numbers = field(text, "NSpid").value_or("");
    const int namespaces = 1 + static_cast<int>(std::count(numbers.begin(), numbers.end(), '\t'));
    return ProcessStatus{std::string(*name), static_cast<pid_t>(*parent), *real, *effective, namespaces};
}

std::optional<ProcessStatus> processStatus(pid_t process) {
    const auto text = contentOf("/proc/" + std::to_string(process) + "/status");
    return text ? parseProcessStatus(*text) : std::nullopt;
}

std::optional<BootTime> parseProcessStart(std::string_view text) {
    // The second field, the name, is in parentheses, and may contain any characters. Each later field begins with a
    // space. The start is the 22nd.
    const auto nameEnd = text.rfind(')');
    if (nameEnd == std::string_view::npos) return std::nullopt;
    text.remove_prefix(nameEnd);
    for (int number = 3; number <= 22; ++number) {
        const auto space = text.find(' ');
        if (space == std::string_view::npos) return std::nullopt;
        text.remove_prefix(space + 1);
    }
    std::int64_t ticks = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), ticks);
    if (error != std::errc() || ticks < 0) return std::nullopt;
    const std::int64_t perSecond = ::sysconf(_SC_CLK_TCK);
    // In nanoseconds, the ticks of three years times their number in a second are more than 63 bits.
    if (ticks / perSecond >= BootTime::max() / BootTime(std::chrono::seconds(1))) return std::nullopt;
    return std::chrono::seconds(ticks / perSecond) +
           BootTime(std::chrono::seconds(1)) * (ticks % perSecond) / perSecond;
}

std::optional<BootTime> processStart(pid_t process) {
    const auto text = contentOf("/proc/" + std::to_string(process) + "/stat");
    return text ? parseProcessStart(*text) : std::nullopt;
}

}  // namespace kovra::helper
