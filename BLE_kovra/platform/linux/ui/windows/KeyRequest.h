#pragma once

#include "BLE_kovra/platform/linux/ui/style/KeyCommand.h"
#include "BLE_kovra/platform/linux/wire/Messages.h"

namespace kovra {

// Returns the message for a command that concerns the whole program, that is, for any but `close`.
inline ToResident request(KeyCommand command) {
    if (command == KeyCommand::quit) return QuitWanted{};
    return SettingsWanted{};
}

}  // namespace kovra
