#include "BLE_kovra/platform/Platform.h"

#include <cstdlib>

namespace kovra {

namespace {
const Platform* installed = nullptr;
}

void Platform::install(const Platform& platform) { installed = &platform; }

const Platform& Platform::current() {
    if (installed == nullptr) std::abort();
    return *installed;
}

}  // namespace kovra
