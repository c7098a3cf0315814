#pragma once

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "helper/Loop.h"
#include "helper/pads/MutedPads.h"
#include "helper/pads/Muter.h"
#include "tests/helper/pads/InputFolder.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra::helper {

using Names = std::set<std::string>;

class MuterRig : public testing::Test {
  protected:
    MuterRig() {
        computer.plug("input5");
        computer.plug("input6");
    }
    Names recordedPads() const { return MutedPads(runtime).names(); }

    const TempFolder folder;
    const std::string runtime = folder / "run";
    InputFolder computer;
    const InhibitedAttribute attribute = computer.attribute();
    Loop loop;
    MutedPads mutedPads{runtime};
    Muter muter{loop, mutedPads, attribute};
};

}  // namespace kovra::helper
