#pragma once

namespace kovra {

// The support address: shown in the About box and the settings window, and the target of their mail links.
inline constexpr const char* supportAddress = "support@ble-kovra.example";

}  // namespace kovra
