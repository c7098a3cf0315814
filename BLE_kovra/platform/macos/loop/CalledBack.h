#pragma once

namespace kovra {

// Does what the system has called the program for. An exception that nobody catches in it ends the program, which gives
// the trackpad back: it does not pass on into the system's frames, which may swallow it or not be made for it.
template <class Work>
void calledBack(const Work& work) noexcept {
    work();
}

}  // namespace kovra
