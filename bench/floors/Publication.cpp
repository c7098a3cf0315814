// The floor of a publication. It builds a record for each device from prepared values and sorts the records by cached
// keys: connected devices first, and each group by the environment's locale. It does not look up devices or query their
// state, and it has no subscriber.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <cwctype>
#include <span>
#include <string>
#include <vector>

#include "bench/DeviceNames.h"

namespace {

struct Record {
    std::string id;
    std::string name;
    bool connected;
};

struct Device {
    Record record;
    std::string key;
};

// Returns a key that orders names as strcoll() does, ignoring case.
std::string sortKey(const std::string& name) {
    std::wstring letters(name.size() + 1, L'\0');
    letters.resize(std::mbstowcs(letters.data(), name.c_str(), letters.size()));
    for (wchar_t& letter : letters) letter = static_cast<wchar_t>(std::towlower(static_cast<std::wint_t>(letter)));
    std::string folded(letters.size() * MB_CUR_MAX + 1, '\0');
    std::wcstombs(folded.data(), letters.c_str(), folded.size());
    std::string key(std::strxfrm(nullptr, folded.c_str(), 0), '\0');
    std::strxfrm(key.data(), folded.c_str(), key.size() + 1);
    return key;
}

// Returns devices of which a quarter is disconnected.
std::vector<Device> devices(std::size_t count) {
    std::setlocale(LC_ALL, "");
    std::vector<Device> made;
    made.reserve(count);
    for (const std::string& name : bench::deviceNames(count)) {
        const std::string number = std::to_string(made.size());
        made.push_back({{name + "#1" + number + ":" + number, name, made.size() % 4 != 0}, sortKey(name)});
    }
    return made;
}

void publish(std::span<const Device> devices) {
    struct Keyed {
        const std::string* key;
        Record record;
    };
    std::vector<Keyed> list;
    list.reserve(devices.size());
    for (const Device& device : devices) list.push_back({&device.key, device.record});
    std::ranges::stable_sort(list, [](const Keyed& one, const Keyed& other) {
        if (one.record.connected != other.record.connected) return one.record.connected;
        return *one.key < *other.key;
    });
    benchmark::DoNotOptimize(list.data());
}

void publication(benchmark::State& state) {
    const std::vector<Device> all = devices(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) publish(all);
}
BENCHMARK(publication)->RangeMultiplier(10)->Range(10, 10000)->Unit(benchmark::kMicrosecond);

// At a start, each device that is found causes one publication.
void start(benchmark::State& state) {
    const std::vector<Device> all = devices(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        for (std::size_t count = 1; count <= all.size(); ++count) publish(std::span(all).first(count));
    }
}
BENCHMARK(start)->Arg(1000)->Unit(benchmark::kMillisecond);

}  // namespace
