#pragma once

namespace kovra {

// Runs the work of a callback from the system. An uncaught exception in it ends the program, which unmutes the
// trackpad. It must not propagate into the system's frames, which may swallow it or may not support exceptions.
template <class Work>
void calledBack(const Work& work) noexcept {
    work();
}

}  // namespace kovra
