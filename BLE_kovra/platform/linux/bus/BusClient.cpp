#include "BLE_kovra/platform/linux/bus/BusClient.h"

#include <algorithm>

namespace kovra {

int newBusClient(const std::string& address, BusHandle& client) {
    sd_bus* made = nullptr;
    int result = sd_bus_new(&made);
    client.reset(made);
    if (result >= 0) result = sd_bus_set_address(made, address.c_str());
    if (result >= 0) result = sd_bus_set_bus_client(made, 1);
    if (result >= 0) result = sd_bus_negotiate_fds(made, 0);
    return std::min(result, 0);
}

}  // namespace kovra
