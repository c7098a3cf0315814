// musl's header, and the declarations that macOS adds to it.
#pragma once

#include_next <spawn.h>

#ifdef __cplusplus
extern "C" {
#endif

#define POSIX_SPAWN_CLOEXEC_DEFAULT 0x4000

int posix_spawn_file_actions_addinherit_np(posix_spawn_file_actions_t* actions, int descriptor);

#ifdef __cplusplus
}
#endif
