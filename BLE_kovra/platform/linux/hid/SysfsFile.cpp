#include "BLE_kovra/platform/linux/hid/SysfsFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "BLE_kovra/platform/posix/FileDescriptor.h"

namespace kovra {

std::variant<std::string, int> readSysfsFile(const std::string& path) {
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_NOCTTY | O_CLOEXEC));
    if (!file.isOpen()) return errno;
    std::string text;
    std::array<char, 4096> piece;  // NOLINT(cppcoreguidelines-pro-type-member-init): read() fills it
    ssize_t count;
    while ((count = ::read(file.number(), piece.data(), piece.size())) > 0)
        text.append(piece.data(), static_cast<std::size_t>(count));
    if (count < 0) return errno;
    return text;
}

}  // namespace kovra
