#include "BLE_kovra/platform/linux/wire/LineReader.h"

#include <utility>

namespace kovra {

std::vector<std::string> LineReader::feed(std::string_view piece) {
    std::vector<std::string> lines;
    while (!piece.empty()) {
        const std::size_t end = piece.find('\n');
        const std::string_view part = piece.substr(0, end);
        isTooLong_ = isTooLong_ || partial_.size() + part.size() > maxLength_;
        if (isTooLong_)
            partial_ = std::string();
        else
            partial_ += part;
        if (end == std::string_view::npos) break;
        if (!std::exchange(isTooLong_, false)) lines.push_back(std::exchange(partial_, std::string()));
        piece.remove_prefix(end + 1);
    }
    return lines;
}

}  // namespace kovra
