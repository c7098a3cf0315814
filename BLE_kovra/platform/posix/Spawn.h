#pragma once

#include <spawn.h>
#include <sys/types.h>

#include <set>
#include <string>
#include <vector>

namespace kovra {

// How another program is started: with an empty signal mask, default handlers and the standard streams as we have
// them. No other descriptor of ours is open in it, but those that it is given.
class Spawn {
  public:
    Spawn();
    ~Spawn();
    Spawn(const Spawn&) = delete;
    Spawn& operator=(const Spawn&) = delete;

    // `ours` becomes `theirs` in the program.
    void give(int ours, int theirs);
    // In the program there is nothing to read from `theirs`, and what is written to it is dropped.
    void giveNothing(int theirs);
    // In a session of its own: what ends us from the terminal does not end it.
    void setApart();

    // Once. Returns when the program has taken over its process: 0, or the system's error.
    int start(const std::string& executable, const std::vector<std::string>& arguments, pid_t& process);

  private:
    void addFlags(int more);
    void closeAllOthers();

    posix_spawn_file_actions_t descriptors_{};
    posix_spawnattr_t attributes_{};
    std::set<int> given_;
};

}  // namespace kovra
