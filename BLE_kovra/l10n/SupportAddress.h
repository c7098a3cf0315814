#pragma once

namespace kovra {

// The support address. The About box and the settings window show it. A button of the box and a link in the window open
// a message to it.
inline constexpr const char* supportAddress = "support@ble-kovra.example";

}  // namespace kovra
