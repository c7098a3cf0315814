#pragma once

#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <initializer_list>
#include <map>
#include <stdexcept>
#include <string>

#include "helper/Descriptor.h"

namespace kovra::helper {

// The changes of some files and folders, in the order in which they were made: files that were written, and names that
// were created.
class Changes {
  public:
    explicit Changes(std::initializer_list<std::string> paths) : events_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
        for (const std::string& path : paths) {
            const int watch = ::inotify_add_watch(events_.number(), path.c_str(), IN_MODIFY | IN_CREATE);
            if (watch < 0) throw std::runtime_error("cannot watch " + path);
            paths_[watch] = path;
        }
    }
    // Returns the path of the first file that was written, or the path that was created first. Empty if there is none.
    std::string first() const {
        alignas(inotify_event) std::array<char, 65'536> buffer{};
        if (::read(events_.number(), buffer.data(), buffer.size()) <= 0) return {};
        inotify_event event{};
        std::memcpy(&event, buffer.data(), sizeof event);
        const std::string& path = paths_.at(event.wd);
        return event.len == 0 ? path : path + "/" + (buffer.data() + sizeof event);
    }

  private:
    Descriptor events_;
    std::map<int, std::string> paths_;
};

}  // namespace kovra::helper
