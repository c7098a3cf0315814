#pragma once

namespace kovra {

// Runs the work of a callback from the system. If the work throws an exception, the program ends, and the trackpad is
// unmuted first (see AppKitApplication). The exception must not propagate into the system's functions, which may
// discard it or may not support exceptions.
template <class Work>
void calledBack(const Work& work) noexcept {
    work();
}

}  // namespace kovra
