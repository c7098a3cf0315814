#pragma once

namespace kovra {

// Where users write for help: shown in the About box and the settings window, and where their mail links lead.
inline constexpr const char* supportAddress = "support@ble-kovra.example";

}  // namespace kovra
