#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "helper/Loop.h"
#include "helper/pads/GiveBack.h"
#include "helper/pads/InputClass.h"
#include "helper/pads/Records.h"

namespace kovra::helper {

// Mutes input devices, and gives back what it has muted.
//
// Each is recorded before it is muted; what cannot be recorded is not muted. What is inhibited and was not recorded is
// somebody else's, and is left alone. What cannot be given back because its driver refuses is tried again, with growing
// pauses, until it is given back, gone, or to be muted again.
class Muter {
  public:
    Muter(Loop& loop, Records& records, const InputClass& inputs) : loop_(loop), records_(records), inputs_(inputs) {}

    // These are muted, and all others that are recorded are given back. None: everything is given back.
    void muteExactly(const std::vector<std::string>& names);

  private:
    void giveBackOthers();
    void mute(const std::string& name);
    void refuse(const std::string& name, const std::string& line);

    Loop& loop_;
    Records& records_;
    const InputClass& inputs_;
    std::set<std::string> wanted_;
    std::set<std::string> refused_;  // of those wanted, what the log has been told of
    Pauses pauses_;
    std::unique_ptr<Loop::Watch> retry_;
};

}  // namespace kovra::helper
