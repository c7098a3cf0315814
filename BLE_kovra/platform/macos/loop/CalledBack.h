#pragma once

namespace kovra {

// Runs the work of a callback from the system. An exception that the work throws ends the program, and the end unmutes
// the trackpad. It must not propagate into the system's frames: they may swallow it or may not support exceptions.
template <class Work>
void calledBack(const Work& work) noexcept {
    work();
}

}  // namespace kovra
