#pragma once

#include "BLE_kovra/platform/macos/loop/EventQueue.h"
#include "tests/platform/macos/fakes/FakeRunLoop.h"

namespace kovra {

class FakeEventQueue : public EventQueue {
  public:
    void sendNextEvent() override { FakeRunLoop::sendNextEvent(); }
    void wake() override {
        FakeRunLoop::addEvent([] {});
    }
};

}  // namespace kovra
