#pragma once

#include <string>

#include "BLE_kovra/platform/linux/bus/BusMessage.h"

namespace kovra {

// Prepares a client of the bus with this address. The caller starts it. Returns 0, or a negative error number.
//
// The client refuses file descriptors, so the bus delivers no message that contains one. Anyone may send such a message
// to any client, and sd-bus would close the descriptor of one that it drops. Closing can take as long as the sender
// wants: that of a socket with SO_LINGER waits for data to be sent. The program would neither mute nor unmute
// meanwhile.
int newBusClient(const std::string& address, BusHandle& client);

}  // namespace kovra
