#pragma once

#include <spawn.h>
#include <sys/types.h>

#include <set>
#include <string>
#include <vector>

namespace kovra {

// Starts a program with an empty signal mask, default signal handlers and our standard streams. The program inherits no
// other descriptors except those passed to give().
class Spawn {
  public:
    Spawn();
    ~Spawn();
    Spawn(const Spawn&) = delete;
    Spawn& operator=(const Spawn&) = delete;

    // Passes our descriptor `ours` to the program as `theirs`.
    void give(int ours, int theirs);
    // Opens /dev/null as `theirs` in the program.
    void giveNothing(int theirs);
    // Starts the program in its own session, out of reach of our terminal's signals.
    void setNewSession();

    // Call it once. Returns 0 or the system's error, after the program has been executed.
    int start(const std::string& executable, const std::vector<std::string>& arguments, pid_t& process);

  private:
    void addFlags(int more);
    void closeAllOthers();

    posix_spawn_file_actions_t descriptors_{};
    posix_spawnattr_t attributes_{};
    std::set<int> given_;
};

}  // namespace kovra
