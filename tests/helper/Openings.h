#pragma once

#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <stdexcept>
#include <string>

#include "helper/Descriptor.h"

namespace kovra::helper {

// A counter of how often a file, or a folder itself, is opened. It does not count the opening of files in the folder.
// The kernel counts openings as one that follow each other before a call of take().
class Openings {
  public:
    explicit Openings(const std::string& path) : events_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
        if (::inotify_add_watch(events_.number(), path.c_str(), IN_OPEN) < 0)
            throw std::runtime_error("cannot watch " + path);
    }
    // Returns the number of openings since the last call.
    int take() const {
        int openings = 0;
        alignas(inotify_event) std::array<char, 65'536> buffer{};
        for (ssize_t size = 0; (size = ::read(events_.number(), buffer.data(), buffer.size())) > 0;) {
            for (ssize_t at = 0; at < size;) {
                inotify_event event{};
                std::memcpy(&event, buffer.data() + at, sizeof event);
                at += static_cast<ssize_t>(sizeof event + event.len);
                if (event.len == 0) ++openings;
            }
        }
        return openings;
    }

  private:
    Descriptor events_;
};

}  // namespace kovra::helper
