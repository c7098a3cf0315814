#include "BLE_kovra/platform/linux/AlertSound.h"

#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <ctime>
#include <type_traits>

namespace kovra {

namespace {

// The few calls of libcanberra that are used. The library is looked for at run time, so that no program without sound
// has to carry it.
struct Canberra {
    struct Context;
    struct Properties;
    using Finished = void (*)(Context*, std::uint32_t id, int result, void* context);

    int (*contextCreate)(Context**);
    int (*propertiesCreate)(Properties**);
    int (*propertiesSet)(Properties*, const char* key, const char* value);
    int (*contextPlay)(Context*, std::uint32_t id, Properties*, Finished, void* context);

    bool load() {
        void* library = ::dlopen("libcanberra.so.0", RTLD_NOW | RTLD_LOCAL);
        if (library == nullptr) return false;
        const auto find = [library](auto& call, const char* name) {
            call = reinterpret_cast<std::remove_reference_t<decltype(call)>>(::dlsym(library, name));
            return call != nullptr;
        };
        return find(contextCreate, "ca_context_create") && find(propertiesCreate, "ca_proplist_create") &&
               find(propertiesSet, "ca_proplist_sets") && find(contextPlay, "ca_context_play_full");
    }
};

void playBell() {
    Canberra canberra{};
    Canberra::Context* context = nullptr;
    Canberra::Properties* properties = nullptr;
    if (!canberra.load() || canberra.contextCreate(&context) < 0 || canberra.propertiesCreate(&properties) < 0) return;
    canberra.propertiesSet(properties, "event.id", "bell-window-system");
    canberra.propertiesSet(properties, "event.description", "BLE-kovra");
    static std::atomic<bool> finished = false;
    const auto whenFinished = [](Canberra::Context*, std::uint32_t, int, void*) { finished = true; };
    if (canberra.contextPlay(context, 0, properties, whenFinished, nullptr) < 0) return;
    constexpr timespec moment{0, 20'000'000};
    for (int waited = 0; !finished && waited < 250; ++waited) ::nanosleep(&moment, nullptr);
}

[[noreturn]] void runPlayer() {
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    std::signal(SIGPIPE, SIG_DFL);
    std::signal(SIGXFSZ, SIG_DFL);
    std::signal(SIGTTOU, SIG_DFL);
    ::close_range(STDERR_FILENO + 1, ~0U, 0);
    ::alarm(5);  // the default action ends the player, whatever the sound server does
    playBell();
    ::_exit(0);
}

}  // namespace

void playAlertSound() {
    // The player's parent ends at once, so that the player is nobody's child here.
    const pid_t parent = ::fork();
    if (parent == 0) {
        if (::fork() == 0) runPlayer();
        ::_exit(0);
    }
    if (parent < 0) return;
    while (::waitpid(parent, nullptr, 0) < 0 && errno == EINTR) {
    }
}

}  // namespace kovra
