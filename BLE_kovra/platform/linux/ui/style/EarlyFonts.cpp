#include "BLE_kovra/platform/linux/ui/style/EarlyFonts.h"

#include <fontconfig/fontconfig.h>

#include <QCoreApplication>
#include <system_error>
#include <thread>

namespace kovra {

namespace {

std::jthread loadingFonts;

void waitForFonts() {
    if (loadingFonts.joinable()) loadingFonts.join();
}

}  // namespace

void loadFontsEarly() {
    qAddPreRoutine(waitForFonts);
    try {
        loadingFonts = std::jthread([] { FcInit(); });
    } catch (const std::system_error&) {
        // No thread can be started. The toolkit loads the fonts when it needs them.
    }
}

}  // namespace kovra
