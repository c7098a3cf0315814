#include "BLE_kovra/app/MailLink.h"

namespace kovra {

std::optional<std::string> mailLink(std::string_view address) {
    constexpr std::string_view allowed =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~:/?#[]@!$&'()*+,;=%";
    if (address.empty() || address.find_first_not_of(allowed) != std::string_view::npos) return std::nullopt;
    return "mailto:" + std::string(address);
}

}  // namespace kovra
