#pragma once

namespace kovra {

// The support address, which the About box and the settings window show. A button in the About box and a link in the
// settings window open a mailto link to it.
inline constexpr const char* supportAddress = "support@ble-kovra.example";

}  // namespace kovra
