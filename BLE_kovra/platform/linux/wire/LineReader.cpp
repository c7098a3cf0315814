#include "BLE_kovra/platform/linux/wire/LineReader.h"

#include <utility>

namespace kovra {

std::vector<std::string> LineReader::feed(std::string_view piece) {
    std::vector<std::string> lines;
    while (!piece.empty()) {
        const std::size_t end = piece.find('\n');
        const std::string_view part = piece.substr(0, end);
        tooLong_ = tooLong_ || begun_.size() + part.size() > longest_;
        if (tooLong_)
            begun_ = std::string();
        else
            begun_ += part;
        if (end == std::string_view::npos) break;
        if (!std::exchange(tooLong_, false)) lines.push_back(std::exchange(begun_, std::string()));
        piece.remove_prefix(end + 1);
    }
    return lines;
}

}  // namespace kovra
