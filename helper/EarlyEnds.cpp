#include "helper/EarlyEnds.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>

#include "helper/Descriptor.h"

namespace kovra::helper {

std::chrono::seconds EarlyEnds::begin() const {
    constexpr int most = 7;
    const Descriptor file(::open(file_.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600));
    char digit = '0';
    const bool isRead = ::pread(file.number(), &digit, 1, 0) == 1 && digit >= '0' && digit <= '9';
    const int before = isRead ? std::min(digit - '0', most) : 0;
    digit = static_cast<char>('0' + std::min(before + 1, most));
    [[maybe_unused]] const ssize_t written = ::pwrite(file.number(), &digit, 1, 0);
    return std::chrono::seconds(before < 3 ? 0 : 1 << (before - 1));
}

void EarlyEnds::clear() const { ::unlink(file_.c_str()); }

}  // namespace kovra::helper
