#pragma once

#include <sys/types.h>

#include <string>

namespace bench {

// The measured program: its first process, and all processes that have the given word in their environment.
class Subject {
  public:
    void set(pid_t process, std::string word);
    // Returns the CPU time of all these processes. Reads that of the first process immediately, then searches for the
    // others.
    long long cpuTimeSoFar() const;

  private:
    pid_t process_ = 0;
    std::string word_;
};

}  // namespace bench
