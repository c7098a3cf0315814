#include "BLE_kovra/platform/linux/session/SessionEvents.h"

#include <utility>

#include "BLE_kovra/platform/linux/session/SdEventApplication.h"

namespace kovra {

SessionEvents::SessionEvents(SdEventLoop& loop, SystemBus& bus, std::string session, const std::string& flag,
                             SdEventApplication& application, std::function<void()> resynchronizeDevices)
    : handover_(loop, flag, [&application] { application.resume(); }),
      session_(bus, std::move(session),
               {.removed = [&application] { application.terminate(); },
                .activated =
                    [this, &application] {
                        handover_.expect();
                        application.resume();
                    },
                .resumed =
                    [this, &application, resynchronize = std::move(resynchronizeDevices)] {
                        resynchronize();
                        handover_.expect();
                        application.resume();
                    }}) {}

}  // namespace kovra
