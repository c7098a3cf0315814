#pragma once

#include <memory>
#include <string>

#include "BLE_kovra/platform/posix/FileDescriptor.h"

namespace kovra {

class Spawn;

// Through which a program's standard output and standard error come, in the order of writing.
class OutputPipe {
  public:
    // Null where the system has no descriptors left, with errno.
    static std::unique_ptr<OutputPipe> open();

    // Before the program is started.
    void giveTo(Spawn& program) const;
    // Once it is: the pipe then ends when the program, and all that it gave the pipe to, have closed it.
    void letGoOfWritingEnd() { static_cast<void>(writing_.close()); }

    // Readable when something has come, and at the end.
    int descriptor() const { return reading_.number(); }
    // Appends what has come, or a good part of it, and waits for nothing. False at the end.
    bool read(std::string& text) const;

  private:
    OutputPipe(int reading, int writing) : reading_(reading), writing_(writing) {}

    FileDescriptor reading_;
    FileDescriptor writing_;
};

}  // namespace kovra
