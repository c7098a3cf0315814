#pragma once

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace kovra {

// The owner of a file descriptor. Its destructor closes the descriptor. The number may be the -1 of a failed open(2) or
// socket(2).
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

    // Closes the descriptor and returns 0 or the error, for callers that must detect a failed write.
    int close() { return ::close(std::exchange(number_, -1)) == 0 || errno == EINTR ? 0 : errno; }

  private:
    int number_;
};

}  // namespace kovra
