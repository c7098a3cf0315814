#pragma once

#include <unistd.h>

#include <utility>

namespace kovra::helper {

// Owns a descriptor and closes it. Made from what open(2) and its like returned, an error too.
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

}  // namespace kovra::helper
