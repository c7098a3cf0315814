#pragma once

namespace kovra {

// Repairs inherited signal dispositions and closed standard descriptors, which could later end, stop or mislead the
// process. Call it first.
void prepareProcess();

// Whether the program was started with SIGHUP ignored, as nohup does. It must then survive its terminal.
bool startedIgnoringHangUp();

}  // namespace kovra
