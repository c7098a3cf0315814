#pragma once

#include <chrono>
#include <utility>

#include "helper/Loop.h"
#include "helper/session/ApplicationWatch.h"
#include "tests/helper/RunUntil.h"

namespace kovra::helper {

// A watch of the application on a loop of its own, with what it has reported.
class ApplicationWatchRig {
  public:
    explicit ApplicationWatchRig(std::chrono::milliseconds firstCheck = std::chrono::milliseconds(100))
        : watch(loop_, firstCheck) {
        watch.onChange = [this] {
            ++changes_;
            loop_.stop();
        };
    }
    bool gotChange() {
        runUntil(loop_, [this] { return changes_ > 0; }, std::chrono::seconds(10));
        return std::exchange(changes_, 0) == 1;
    }
    bool gotNothing() {
        handleEvents(loop_);
        return changes_ == 0;
    }
    bool gotNothingFor(std::chrono::milliseconds time) {
        runFor(loop_, time);
        return changes_ == 0;
    }

  private:
    Loop loop_;
    int changes_ = 0;

  public:
    ApplicationWatch watch;
};

}  // namespace kovra::helper
