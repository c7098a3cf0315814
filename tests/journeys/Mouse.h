#pragma once

#include "tests/fakes/FakeHID.h"

namespace kovra {

// The mouse that the tests of this folder choose.
inline const DeviceDescription mouse = aMouse("Wireless Mouse").ids(4660, 22136);

}  // namespace kovra
