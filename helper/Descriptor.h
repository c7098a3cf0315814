#pragma once

#include <sys/stat.h>
#include <unistd.h>

#include <utility>

namespace kovra::helper {

// Owns a file descriptor and closes it. The constructor accepts any result of open(2) and similar calls, including -1
// for an error.
class Descriptor {
  public:
    Descriptor() = default;
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    ~Descriptor() {
        if (isOpen()) ::close(number_);
    }

    int number() const { return number_; }
    bool isOpen() const { return number_ >= 0; }

  private:
    int number_ = -1;
};

// Whether both descriptors are open and refer to the same file.
inline bool isSameFile(const Descriptor& one, const Descriptor& other) {
    struct stat first{};
    struct stat second{};
    return ::fstat(one.number(), &first) == 0 && ::fstat(other.number(), &second) == 0 &&
           first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

}  // namespace kovra::helper
