#include "helper/pads/InhibitedAttribute.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "helper/Descriptor.h"

namespace kovra::helper {

std::optional<bool> InhibitedAttribute::isInhibited(const std::string& name) const {
    const Descriptor file(::open(path(name).c_str(), O_RDONLY | O_CLOEXEC));
    char first = 0;
    if (!file.isOpen() || ::read(file.number(), &first, 1) != 1) return std::nullopt;
    if (first != '0' && first != '1') return std::nullopt;
    return first == '1';
}

int InhibitedAttribute::setInhibited(const std::string& name, bool inhibited) const {
    const Descriptor file(::open(path(name).c_str(), O_WRONLY | O_CLOEXEC));
    if (!file.isOpen()) return errno;
    while (::write(file.number(), inhibited ? "1" : "0", 1) < 0) {
        if (errno != EINTR) return errno;
    }
    return 0;
}

int InhibitedAttribute::giveTo(const std::string& name, gid_t group) const {
    constexpr uid_t sameOwner = -1;
    constexpr mode_t mode = S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH;
    const Descriptor file(::open(path(name).c_str(), O_RDONLY | O_CLOEXEC));
    if (!file.isOpen() || ::fchown(file.number(), sameOwner, group) != 0) return errno;
    return ::fchmod(file.number(), mode) == 0 ? 0 : errno;
}

bool InhibitedAttribute::meansGone(int error) const {
    return error == ENODEV || (error == ENOENT && ::access(folder_.c_str(), F_OK) == 0);
}

}  // namespace kovra::helper
