#pragma once

#include <sys/types.h>

#include <string>

namespace bench {

// The program that is measured: its first process, and all that have this word in their environment.
class Subject {
  public:
    void set(pid_t process, std::string word);
    // Of all its processes. The first one's is read at once, for the others have to be looked for.
    long long cpuTimeSoFar() const;

  private:
    pid_t process_ = 0;
    std::string word_;
};

}  // namespace bench
