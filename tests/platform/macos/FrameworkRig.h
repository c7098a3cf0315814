#pragma once

#include <gtest/gtest.h>

#include "tests/platform/macos/fakes/FakeDefaults.h"
#include "tests/platform/macos/fakes/FakeHotKeys.h"
#include "tests/platform/macos/fakes/FakeIOKit.h"
#include "tests/platform/macos/fakes/FakeMessagePorts.h"
#include "tests/platform/macos/fakes/FakeRunLoop.h"
#include "tests/platform/macos/fakes/FakeSources.h"
#include "tests/platform/macos/fakes/FakeValues.h"

namespace kovra {

// The fake frameworks for one test. They start in their initial state, and at the end the rig checks that the adapters
// have released everything. Construct the rig before the adapters.
class FrameworkRig {
  public:
    FrameworkRig() { clear(); }
    FrameworkRig(const FrameworkRig&) = delete;
    FrameworkRig& operator=(const FrameworkRig&) = delete;
    ~FrameworkRig() {
        FakeRunLoop::endProcess();
        clear();
        EXPECT_EQ(FakeObject::alive(), 0U) << "references that nobody released";
        EXPECT_EQ(FakeHotKeys::held(), 0U);
        EXPECT_EQ(FakeSources::held(), 0U);
    }

  private:
    static void clear() {
        FakeIOKit::unplugAll();
        FakeIOKit::allowListening(true);
        FakeIOKit::takeRequests();
        FakeHotKeys::clear();
        FakeDefaults::clear();
        FakeMessagePorts::clear();
        FakeSettings::languages = {"en-GB", "ru-RU"};
    }
};

}  // namespace kovra
