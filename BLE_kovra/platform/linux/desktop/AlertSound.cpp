#include "BLE_kovra/platform/linux/desktop/AlertSound.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <ctime>
#include <type_traits>

#include "BLE_kovra/platform/linux/loop/Handles.h"

namespace kovra {

namespace {

// The functions of libcanberra that play a sound. The library is loaded at run time, so that systems without sound do
// not have to install it.
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

// Plays the sound and waits for its end, for at most five seconds. Returns false if the sound cannot be played.
bool playEventSound() {
    Canberra canberra{};
    Canberra::Context* context = nullptr;
    Canberra::Properties* properties = nullptr;
    if (!canberra.load() || canberra.contextCreate(&context) < 0 || canberra.propertiesCreate(&properties) < 0)
        return false;
    canberra.propertiesSet(properties, "event.id", "bell-window-system");
    canberra.propertiesSet(properties, "event.description", "BLE-kovra");
    constexpr int playing = 1;  // results of the library are zero or negative
    static std::atomic<int> result = playing;
    const auto finished = [](Canberra::Context*, std::uint32_t, int how, void*) { result = how; };
    if (canberra.contextPlay(context, 0, properties, finished, nullptr) < 0) return false;
    constexpr timespec moment{0, 20'000'000};
    for (int waited = 0; result == playing && waited < 250; ++waited) ::nanosleep(&moment, nullptr);
    return result >= 0;
}

void ringBell() {
    const Handle<xcb_connection_t, xcb_disconnect> connection(xcb_connect(nullptr, nullptr));
    constexpr std::int8_t asLoudAsUsual = 0;
    xcb_bell(connection.get(), asLoudAsUsual);
    // The server drops unread requests of a client that disconnects. A reply to a later request proves that the server
    // has read the request for the bell.
    const Allocated<xcb_get_input_focus_reply_t> answer{
        xcb_get_input_focus_reply(connection.get(), xcb_get_input_focus(connection.get()), nullptr)};
}

[[noreturn]] void runPlayer() {
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    std::signal(SIGPIPE, SIG_DFL);
    std::signal(SIGXFSZ, SIG_DFL);
    std::signal(SIGTTOU, SIG_DFL);
    ::close_range(STDIN_FILENO, ~0U, 0);
    // Sound libraries print errors if there is no sound card. These errors must not reach the program's log.
    for (int standard = STDIN_FILENO; standard <= STDERR_FILENO; ++standard) ::open("/dev/null", O_RDWR);
    ::alarm(5);  // SIGALRM ends this process even if the sound server hangs
    if (!playEventSound()) ringBell();
    ::_exit(0);
}

}  // namespace

void playAlertSound() {
    // Fork twice, so that the process that plays the sound is not a child of this process and needs no reaping.
    const pid_t parent = ::fork();
    if (parent == 0) {
        // The helper looks for a process with the application's name. It must not take the process that plays the sound
        // for the application.
        ::prctl(PR_SET_NAME, "ble-kovra-sound");
        if (::fork() == 0) runPlayer();
        ::_exit(0);
    }
    if (parent < 0) return;
    while (::waitpid(parent, nullptr, 0) < 0 && errno == EINTR) {
    }
}

}  // namespace kovra
