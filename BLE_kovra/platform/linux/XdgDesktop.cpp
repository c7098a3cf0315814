#include "BLE_kovra/platform/linux/XdgDesktop.h"

#include <algorithm>
#include <cstdlib>

namespace kovra {

std::vector<std::string> splitAtColons(std::string_view list) {
    std::vector<std::string> parts;
    while (!list.empty()) {
        const auto end = list.find(':');
        parts.emplace_back(list.substr(0, end));
        list.remove_prefix(end == std::string_view::npos ? list.size() : end + 1);
    }
    return parts;
}

std::vector<std::string> desktopNames() {
    const char* names = std::getenv("XDG_CURRENT_DESKTOP");
    return splitAtColons(names == nullptr ? "" : names);
}

bool anyOf(const std::vector<std::string>& some, const std::vector<std::string>& others) {
    return std::find_first_of(some.begin(), some.end(), others.begin(), others.end()) != some.end();
}

}  // namespace kovra
