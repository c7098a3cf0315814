#include "BLE_kovra/platform/linux/control/HelperService.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <ctime>

#include "BLE_kovra/platform/linux/control/People.h"
#include "BLE_kovra/platform/linux/control/Question.h"
#include "BLE_kovra/platform/posix/FileDescriptor.h"

namespace kovra::control {

namespace {

constexpr const char* systemd = "org.freedesktop.systemd1";
constexpr const char* unit = "ble-kovra-helper.service";
// The kernel keeps 15 characters of a process's name.
constexpr const char* accountName = "_ble-kovra-helper";
constexpr const char* processName = "ble-kovra-helpe";

Service::State stateOf(const std::string& load, const std::string& active) {
    if (load == "not-found") return Service::State::missing;
    if (active == "active") return Service::State::running;
    if (active == "activating" || active == "reloading") return Service::State::starting;
    if (active == "failed") return Service::State::failed;
    if (active == "inactive" || active == "deactivating") return Service::State::stopped;
    return Service::State::unknown;
}

std::string reasonOf(const BusReply& reply) {
    if (reply.kind == BusReply::Kind::silent) return "the system bus or systemd does not answer";
    return reply.message.empty() ? reply.error : reply.message;
}

Service askSystemd() {
    Service service;
    BusHandle bus;
    if (const int opened = openSystemBus(bus); opened < 0) {
        service.error = std::string("there is no system bus (") + std::strerror(-opened) + ")";
        return service;
    }
    const BusReply loaded = ask(bus.get(), systemd, "/org/freedesktop/systemd1", "org.freedesktop.systemd1.Manager",
                                "LoadUnit", [](BusWriter& writer) { writer.text(unit); });
    const char* path = nullptr;
    if (loaded.kind != BusReply::Kind::answered || sd_bus_message_read(loaded.values.get(), "o", &path) <= 0) {
        service.error = reasonOf(loaded);
        return service;
    }
    const BusReply all = askForProperties(bus.get(), systemd, path, "org.freedesktop.systemd1.Unit");
    if (all.kind != BusReply::Kind::answered) {
        service.error = reasonOf(all);
        return service;
    }
    std::string load, active;
    forEachEntry(all.values.get(), "{sv}", [&](std::string_view property) {
        std::string* text = nullptr;
        if (property == "LoadState") text = &load;
        if (property == "ActiveState") text = &active;
        if (property == "UnitFileState") text = &service.unitState;
        if (text == nullptr) return 0;
        const char* value = nullptr;
        const int result = sd_bus_message_read(all.values.get(), "v", "s", &value);
        if (result > 0) *text = value;
        return result;
    });
    service.state = stateOf(load, active);
    if (service.state == Service::State::unknown) service.error = "systemd's answer is not known";
    return service;
}

// Returns the list of the file, or an empty text if it has none.
std::string accessListOf(const FileDescriptor& file) {
    std::array<char, 1024> list{};
    const ssize_t size = ::fgetxattr(file.number(), "system.posix_acl_access", list.data(), list.size());
    return size < 0 ? std::string() : std::string(list.data(), static_cast<std::size_t>(size));
}

// Reads a number of the list, which has the least significant byte first.
template <typename Number>
Number numberAt(std::string_view list, std::size_t place) {
    Number number = 0;
    for (std::size_t i = sizeof(Number); i > 0; --i)
        number = static_cast<Number>(number << 8 | static_cast<unsigned char>(list[place + i - 1]));
    return number;
}

}  // namespace

Moment momentOf(std::int64_t seconds) {
    const auto time = static_cast<std::time_t>(seconds);
    std::tm local{};
    std::array<char, 32> text{};
    ::localtime_r(&time, &local);
    const std::size_t size = std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &local);
    return {seconds, std::string(text.data(), size)};
}

std::optional<uid_t> writerIn(std::string_view list) {
    constexpr std::uint32_t version = 2;
    constexpr std::size_t header = 4, size = 8;
    constexpr std::uint16_t aUser = 0x02, theMask = 0x10, mayWrite = 0x02;
    if (list.size() < header || numberAt<std::uint32_t>(list, 0) != version) return std::nullopt;
    std::optional<uid_t> writer;
    bool isMasked = false;
    for (std::size_t entry = header; entry + size <= list.size(); entry += size) {
        const auto kind = numberAt<std::uint16_t>(list, entry);
        const bool writes = (numberAt<std::uint16_t>(list, entry + 2) & mayWrite) != 0;
        if (kind == aUser && writes && !writer) writer = numberAt<std::uint32_t>(list, entry + 4);
        if (kind == theMask && !writes) isMasked = true;
    }
    return isMasked ? std::nullopt : writer;
}

Flag readFlag(const std::string& path) {
    Flag flag;
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status{};
    if (!file.isOpen() || ::fstat(file.number(), &status) != 0) {
        flag.error = std::strerror(errno);
        return flag;
    }
    if (!S_ISREG(status.st_mode)) {
        flag.error = "it is not a plain file";
        return flag;
    }
    std::array<char, 4> word{};  // one byte more than the longest word
    const ssize_t size = ::pread(file.number(), word.data(), word.size(), 0);
    if (size < 0) {
        flag.error = std::strerror(errno);
        return flag;
    }
    const std::string_view text(word.data(), static_cast<std::size_t>(size));
    flag.isReadable = true;
    flag.word = text == "on" || text == "off" ? std::string(text) : "";
    flag.written = momentOf(status.st_mtim.tv_sec);
    if (const auto writer = writerIn(accessListOf(file))) flag.writer = personOf(*writer);
    return flag;
}

Service helperService(const std::string& processes) {
    Service service = askSystemd();
    const bool mayRun = service.state == Service::State::unknown || service.state == Service::State::missing;
    const bool runs = mayRun && std::ranges::any_of(processesNamed(processName, processes), [](const Process& process) {
                          return process.user.name == "root" || process.user.name == accountName;
                      });
    if (runs) service = {Service::State::running, "", ""};
    return service;
}

}  // namespace kovra::control
