// Opens the settings window in a window process, changes its list many times, and closes it.
//
// Prints JSON: the private dirty memory of the window process in MiB after each tenth of the changes and after closing
// the window. It also prints that process's number of descriptors and threads before and after closing. While the
// socket's buffer is full this program waits, so that the window process receives every change.

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "BLE_kovra/app/settings/SettingsView.h"
#include "BLE_kovra/core/AppState.h"
#include "BLE_kovra/l10n/L10n.h"
#include "BLE_kovra/platform/linux/wire/Encoding.h"
#include "BLE_kovra/platform/linux/wire/LineSocket.h"
#include "tests/fakes/FakePreferences.h"

namespace kovra {
namespace {

class WindowProgram {
  public:
    explicit WindowProgram(const char* path) {
        int ends[2];
        if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) std::exit(1);
        socket_ = ends[0];
        pid_ = ::fork();
        if (pid_ == 0) {
            ::dup2(ends[1], windowSocket);
            ::execl(path, path, nullptr);
            ::_exit(127);
        }
        ::close(ends[1]);
    }
    ~WindowProgram() {
        ::close(socket_);
        ::waitpid(pid_, nullptr, 0);
    }
    WindowProgram(const WindowProgram&) = delete;
    WindowProgram& operator=(const WindowProgram&) = delete;

    void send(const ToWindow& message) const {
        const std::string line = encode(message);
        for (std::size_t sent = 0; sent < line.size();) {
            const ssize_t count = ::write(socket_, line.data() + sent, line.size() - sent);
            if (count <= 0) std::exit(1);
            sent += static_cast<std::size_t>(count);
        }
    }
    // Waits until the process has used no CPU time for half a second.
    void settle() const {
        for (long before = -1, now = ticks(); now != before; before = now, now = ticks()) ::usleep(500'000);
    }
    double dirty() const {
        std::ifstream rollup("/proc/" + std::to_string(pid_) + "/smaps_rollup");
        for (std::string word; rollup >> word;) {
            double kibibytes = 0;
            if (word == "Private_Dirty:" && rollup >> kibibytes) return kibibytes / 1024;
        }
        std::exit(1);
    }
    std::size_t descriptors() const { return count("/fd"); }
    std::size_t threads() const { return count("/task"); }

  private:
    std::size_t count(const char* folder) const {
        const std::filesystem::directory_iterator entries("/proc/" + std::to_string(pid_) + folder);
        return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
    }
    // Returns the CPU time that the process has used, in clock ticks.
    long ticks() const {
        std::ifstream stat("/proc/" + std::to_string(pid_) + "/stat");
        std::string word;
        for (int i = 0; i < 13; ++i) stat >> word;
        long user = 0, system = 0;
        stat >> user >> system;
        return user + system;
    }

    int socket_ = -1;
    pid_t pid_ = 0;
};

// A list of up to 30 devices. Each step connects or disconnects a device and changes the length of the list. Every
// seventh step also rotates the list.
class ChangingList {
  public:
    explicit ChangingList(AppState& state) : state_(state) {
        for (int i = 0; i < 30; ++i) {
            const std::string name = "Mouse " + std::to_string(i);
            devices_.push_back({name + "#1:" + std::to_string(i), name, true});
        }
    }
    void step(long number) {
        HIDDeviceInfo& device = devices_[static_cast<std::size_t>(number) % devices_.size()];
        device.connected = !device.connected;
        if (number % 7 == 0) std::rotate(devices_.begin(), devices_.begin() + 1, devices_.end());
        auto shown = devices_;
        shown.resize(static_cast<std::size_t>(number * 11 % 31));
        state_.devices.set(shown);
    }

  private:
    AppState& state_;
    std::vector<HIDDeviceInfo> devices_;
};

int run(const char* program, long changes) {
    FakePreferences preferences;
    AppState state(preferences);
    const L10n texts({"en"});
    ChangingList list(state);
    ShowWindow shown;
    shown.title = "BLE-kovra";
    shown.styleMask = 7;
    shown.contentSize = {440, 480};
    shown.front = 1;
    const WindowProgram window(program);
    std::cout << "{\"dirty\": [";
    for (long number = 1; number <= changes; ++number) {
        list.step(number);
        shown.content = SettingsView(state, texts).body();
        window.send(shown);
        if (number % (changes / 10) != 0) continue;
        window.settle();
        std::cout << window.dirty() << (number == changes ? "]" : ", ") << std::flush;
    }
    const std::size_t descriptors = window.descriptors(), threads = window.threads();
    window.send(HideWindow{});
    window.settle();
    std::cout << ", \"closed\": " << window.dirty() << ", \"descriptors\": " << descriptors
              << ", \"descriptors_closed\": " << window.descriptors() << ", \"threads\": " << threads
              << ", \"threads_closed\": " << window.threads() << "}\n";
    return 0;
}

}  // namespace
}  // namespace kovra

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    std::signal(SIGPIPE, SIG_IGN);
    return kovra::run(argv[1], std::strtol(argv[2], nullptr, 10));
}
