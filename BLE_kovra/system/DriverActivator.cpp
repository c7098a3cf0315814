#include "BLE_kovra/system/DriverActivator.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "BLE_kovra/platform/FileSystem.h"
#include "BLE_kovra/platform/ProcessRunner.h"
#include "BLE_kovra/platform/SystemLog.h"
#include "BLE_kovra/platform/Utf8.h"

namespace kovra {

namespace {

bool listsActiveExtension(std::string_view listing) {
    if (!isUtf8(listing)) return false;
    while (!listing.empty()) {
        const std::string_view line = listing.substr(0, listing.find('\n'));
        const auto has = [&](std::string_view word) { return line.find(word) != std::string_view::npos; };
        if (has(DriverActivator::extensionID) && has("activated") && has("enabled")) return true;
        listing.remove_prefix(std::min(line.size() + 1, listing.size()));
    }
    return false;
}

}  // namespace

bool DriverActivator::isExtensionActive() const {
    const auto listing = processes_.output({listingTool, {"list"}});
    return listing && listsActiveExtension(*listing);
}

void DriverActivator::activate(bool force) const {
    if (!files_.fileExists(managerPath)) {
        log_.log("ble-kovra: Manager не найден по пути " + std::string(managerPath));
        return;
    }
    const Outcome started = processes_.start({managerPath, {force ? "forceActivate" : "activate"}});
    if (!started) log_.log("ble-kovra: не удалось запустить активацию драйвера: " + started.reason());
}

}  // namespace kovra
