#pragma once

namespace kovra {

// Repairs inherited signal dispositions and closed standard descriptors, which could later end, stop or mislead the
// process. Call this function first in main().
void prepareProcess();

// Returns whether the program was started with SIGHUP ignored, as nohup does; it must then survive its terminal. Call
// this function before SIGHUP gets a handler.
bool startedIgnoringHangUp();

}  // namespace kovra
