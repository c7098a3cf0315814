#pragma once

#include <memory>
#include <utility>

#include "BLE_kovra/platform/HotKeyService.h"
#include "BLE_kovra/platform/linux/loop/Listeners.h"

namespace kovra {

// The handlers of a hot key service. Here a press travels no further whatever they answer: the desktop has given it to
// this program alone.
class HotKeyHandlers {
  public:
    std::unique_ptr<HotKeyService::Reference> install(HotKeyService::Handler handler) {
        return std::make_unique<Installed>(handlers_.add([handler = std::move(handler)] { handler(); }));
    }
    void pressed() const { handlers_.call(); }

  private:
    class Installed : public HotKeyService::Reference {
      public:
        explicit Installed(Listeners<>::Token token) : token_(std::move(token)) {}

      private:
        Listeners<>::Token token_;
    };

    Listeners<> handlers_;
};

}  // namespace kovra
