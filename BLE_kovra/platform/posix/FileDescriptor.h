#pragma once

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace kovra {

// Owns a descriptor and closes it. Made from what open(2) or socket(2) returned, an error too.
class FileDescriptor {
  public:
    explicit FileDescriptor(int number) : number_(number) {}
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() {
        if (isOpen()) ::close(number_);
    }

    int number() const { return number_; }
    bool isOpen() const { return number_ >= 0; }

    // For callers that need to know whether the system kept what was written. 0, or the error.
    int close() { return ::close(std::exchange(number_, -1)) == 0 || errno == EINTR ? 0 : errno; }

  private:
    int number_;
};

}  // namespace kovra
