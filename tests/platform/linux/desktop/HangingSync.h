#pragma once

#include <atomic>

namespace kovra {

// While this is set, fsync() does not return in this program, as on a disk that does not answer. SmallTextFileTest.cpp
// defines the fsync() of this program.
extern std::atomic<bool> syncsHang;

}  // namespace kovra
