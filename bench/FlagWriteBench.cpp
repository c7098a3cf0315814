// Measures one change of the flag on the file system of the current folder.

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "BLE_kovra/platform/posix/PosixFileSystem.h"
#include "bench/floors/FlagFile.h"

namespace kovra {
namespace {

using std::chrono::steady_clock;

void writeOurWay(const std::string& path, bool on) {
    static PosixFileSystem files;
    if (!files.writeWholeFile(path, on ? "on" : "off")) std::perror(path.c_str());
}

void writeBarely(const std::string& path, bool on) { floors::writeFlag(path.c_str(), on); }

template <auto write>
void flagWrite(benchmark::State& state) {
    const std::string path = "kovra-bench-" + std::to_string(::getpid());
    // As in real use, the process sleeps before each write, so its caches are cold. The median ignores the few writes
    // that wait for the disk.
    std::mt19937 random(7);
    std::vector<double> microseconds;
    bool on = false;
    write(path, on);
    for (auto _ : state) {
        std::this_thread::sleep_for(std::chrono::microseconds(2000 + random() % 3000));
        on = !on;
        const auto begin = steady_clock::now();
        write(path, on);
        const std::chrono::duration<double> taken = steady_clock::now() - begin;
        state.SetIterationTime(taken.count());
        microseconds.push_back(taken.count() * 1e6);
    }
    ::unlink(path.c_str());
    std::ranges::nth_element(microseconds, microseconds.begin() + std::ssize(microseconds) / 2);
    state.counters["median_us"] = microseconds[microseconds.size() / 2];
}
BENCHMARK(flagWrite<writeOurWay>)->Name("flag_write/ours")->Iterations(300)->UseManualTime();
BENCHMARK(flagWrite<writeBarely>)->Name("flag_write/bare")->Iterations(300)->UseManualTime();

}  // namespace
}  // namespace kovra
