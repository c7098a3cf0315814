#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kovra {

// Puts lines together again from the pieces in which a stream delivers them. A line of more than `longest` bytes is
// dropped as a whole, so that memory is bounded whatever the other side sends.
class LineReader {
  public:
    explicit LineReader(std::size_t longest) : longest_(longest) {}

    // The lines that end in this piece, without their line feeds.
    std::vector<std::string> feed(std::string_view piece);

  private:
    std::size_t longest_;
    std::string begun_;
    bool tooLong_ = false;
};

}  // namespace kovra
