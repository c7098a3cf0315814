#pragma once

#include <sys/resource.h>

#include <csignal>
#include <stdexcept>

namespace kovra {

// While this object exists, files of this process cannot grow beyond this size. A write then fails as on a full disk,
// but with EFBIG. The limit also applies to root.
class FileSizeLimit {
  public:
    explicit FileSizeLimit(rlim_t bytes) {
        if (::getrlimit(RLIMIT_FSIZE, &before_) != 0) throw std::runtime_error("no limits here");
        handler_ = std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{bytes, before_.rlim_max};
        if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) throw std::runtime_error("cannot limit the size of files");
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    ~FileSizeLimit() {
        ::setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }

  private:
    rlimit before_{};
    void (*handler_)(int) = SIG_DFL;
};

}  // namespace kovra
