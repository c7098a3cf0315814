#pragma once

namespace kovra {

// Resets inherited signal dispositions and opens closed standard descriptors. They could otherwise end or stop the
// process later, or send its output to the wrong file. Call this function at the start of main().
void prepareProcess();

// Returns whether the program was started with SIGHUP ignored, as nohup does. It must then keep running when its
// terminal is closed. Call this function before SIGHUP gets a handler.
bool startedIgnoringHangUp();

}  // namespace kovra
