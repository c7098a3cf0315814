#pragma once

#include <spawn.h>
#include <sys/types.h>

#include <set>
#include <string>
#include <vector>

namespace kovra {

// The start of one program, with an empty signal mask, the default action for every signal, and this process's standard
// streams. Of the other descriptors the program inherits only those passed to give().
class Spawn {
  public:
    Spawn();
    ~Spawn();
    Spawn(const Spawn&) = delete;
    Spawn& operator=(const Spawn&) = delete;

    // Passes the descriptor `ours` of this process to the program as `theirs`.
    void give(int ours, int theirs);
    // Opens /dev/null as `theirs` in the program.
    void giveNothing(int theirs);
    // Starts the program in its own session, so that it does not receive the signals of this process's terminal.
    void setNewSession();

    // Starts the program and sets `process` to its process id. Call it once. Returns 0 once the program has been
    // executed, or the error number if that failed.
    int start(const std::string& executable, const std::vector<std::string>& arguments, pid_t& process);

  private:
    void closeAllOthers();

    posix_spawn_file_actions_t descriptors_{};
    posix_spawnattr_t attributes_{};
    int flags_ = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;
    std::set<int> given_;
};

}  // namespace kovra
