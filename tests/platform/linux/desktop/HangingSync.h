#pragma once

#include <atomic>

namespace kovra {

// While this is set, fsync() does not return in this program, as on a disk that does not answer. SmallTextFileTest.cpp
// puts its own function in place of the C library's.
extern std::atomic<bool> syncsHang;

}  // namespace kovra
