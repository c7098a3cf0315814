#pragma once

namespace kovra {

// What a process may be started with, or without, that would end it later without a word, stop it, or mislead it. First
// of all.
void prepareProcess();

// True under nohup: the program is to outlive its terminal.
bool startedIgnoringHangUp();

}  // namespace kovra
