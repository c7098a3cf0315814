#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kovra {

// Assembles lines from the pieces that a stream delivers. It drops a line of more than `maxLength` bytes as a whole, so
// that memory is bounded whatever the peer sends.
class LineReader {
  public:
    explicit LineReader(std::size_t maxLength) : maxLength_(maxLength) {}

    // Returns the lines that end in this piece, without their line feeds.
    std::vector<std::string> feed(std::string_view piece);

  private:
    std::size_t maxLength_;
    std::string partial_;
    bool isTooLong_ = false;
};

}  // namespace kovra
