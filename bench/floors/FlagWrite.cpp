// The floor of one change of the flag. One process sleeps until another one sends it a byte, and then only writes the
// named file. Prints the median of 300 such writes in microseconds, from the wake-up to the closed file.

#include <sys/socket.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <random>
#include <thread>
#include <vector>

#include "bench/floors/FlagFile.h"

namespace {

using std::chrono::steady_clock;

constexpr int changes = 300;

void writeWhenWoken(int waker, const char* path) {
    std::vector<double> microseconds;
    char byte = 0;
    for (bool on = true; ::read(waker, &byte, 1) == 1; on = !on) {
        const auto begin = steady_clock::now();
        floors::writeFlag(path, on);
        microseconds.push_back(std::chrono::duration<double, std::micro>(steady_clock::now() - begin).count());
    }
    std::ranges::nth_element(microseconds, microseconds.begin() + std::ssize(microseconds) / 2);
    std::printf("%.3f\n", microseconds[microseconds.size() / 2]);
}

void wakeRepeatedly(int waker) {
    std::mt19937 random(7);
    for (int i = 0; i < changes; ++i) {
        // The same pauses as in bench/FlagWriteBench.cpp, which measures the program.
        std::this_thread::sleep_for(std::chrono::microseconds(2000 + random() % 3000));
        if (::write(waker, "!", 1) != 1) return;
    }
}

}  // namespace

int main(int count, char** arguments) {
    int waker[2];
    if (count != 2 || ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, waker) != 0) return 2;
    if (::fork() == 0) {
        ::close(waker[1]);
        writeWhenWoken(waker[0], arguments[1]);
        return 0;
    }
    wakeRepeatedly(waker[1]);
    ::close(waker[1]);
    int status = 0;
    ::wait(&status);
    return status;
}
