// Prints "watching", and then a line each time that one of the named files says another word: "on" or "off" in a flag,
// "1" or "0" in an attribute. The line contains the index of the file, and the time in seconds of CLOCK_MONOTONIC. That
// is when a reader that watches the file, such as the helper, learns the word. The files must exist. Runs until killed.

#include <fcntl.h>
#include <sched.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <ctime>
#include <string>
#include <string_view>
#include <vector>

namespace {

// Returns the word in the file, or an empty string while the word is incomplete.
std::string wordIn(const char* path) {
    static constexpr std::array<std::string_view, 4> words{"on", "off", "1", "0"};
    std::array<char, 16> text{};
    const int file = ::open(path, O_RDONLY | O_CLOEXEC);
    const ssize_t size = ::read(file, text.data(), text.size());
    ::close(file);
    std::string_view word(text.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    word = word.substr(0, word.find('\n'));
    return std::ranges::find(words, word) == words.end() ? "" : std::string(word);
}

}  // namespace

int main(int count, char** arguments) {
    // Run before all processes of normal priority, so that the times are accurate.
    const sched_param priority{10};
    const int watch = ::inotify_init1(IN_CLOEXEC);
    if (watch < 0 || ::sched_setscheduler(0, SCHED_FIFO, &priority) != 0) return 1;
    std::vector<std::string> last;
    for (int file = 1; file < count; ++file) {
        if (::inotify_add_watch(watch, arguments[file], IN_MODIFY) != file) {
            std::perror(arguments[file]);
            return 1;
        }
        last.push_back(wordIn(arguments[file]));
    }
    std::puts("watching");
    for (;;) {
        std::fflush(stdout);
        inotify_event event{};
        if (::read(watch, &event, sizeof event) != sizeof event) return 1;
        timespec now{};
        ::clock_gettime(CLOCK_MONOTONIC, &now);
        const int file = event.wd - 1;
        const std::string word = wordIn(arguments[event.wd]);
        if (word.empty() || word == last[static_cast<std::size_t>(file)]) continue;
        last[static_cast<std::size_t>(file)] = word;
        std::printf("%d %lld.%09ld\n", file, static_cast<long long>(now.tv_sec), now.tv_nsec);
    }
}
