#pragma once

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <vector>

namespace kovra {

// During the lifetime of this object, the process can open no descriptor. Those that are open stay usable. A program
// that is started without them can open some.
class NoDescriptors {
  public:
    NoDescriptors() {
        EXPECT_EQ(::getrlimit(RLIMIT_NOFILE, &before_), 0);
        const rlimit few{64, before_.rlim_max};
        EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
        for (int used = ::dup(STDERR_FILENO); used >= 0; used = ::dup(STDERR_FILENO)) used_.push_back(used);
    }
    NoDescriptors(const NoDescriptors&) = delete;
    NoDescriptors& operator=(const NoDescriptors&) = delete;
    ~NoDescriptors() {
        for (const int used : used_) ::close(used);
        ::setrlimit(RLIMIT_NOFILE, &before_);
    }

  private:
    rlimit before_{};
    std::vector<int> used_;
};

}  // namespace kovra
