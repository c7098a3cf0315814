#pragma once

#include <memory>
#include <string>

#include "BLE_kovra/platform/posix/FileDescriptor.h"

namespace kovra {

class Spawn;

// A pipe for a program's standard output and standard error, in the order of writing.
class OutputPipe {
  public:
    // Returns null, with errno set, on failure.
    static std::unique_ptr<OutputPipe> open();

    // Connects the program's standard output and standard error to the pipe. Call it before the program is started.
    void giveTo(Spawn& program) const;
    // Call it after the program has been started. The pipe then ends when the last process that can write to it closes
    // it.
    void closeWritingEnd() { static_cast<void>(writing_.close()); }

    // Returns a descriptor that is readable when there is data, and at the end.
    int descriptor() const { return reading_.number(); }
    // Appends available data to `text` without blocking. Returns false at the end and on an error.
    bool read(std::string& text) const;

  private:
    OutputPipe(int reading, int writing) : reading_(reading), writing_(writing) {}

    FileDescriptor reading_;
    FileDescriptor writing_;
};

}  // namespace kovra
