// Measures one change in the list of devices, from the device's event until the subscriber has received the whole list.
// Also measures all changes that a start causes. Names are sorted by the environment's locale.

#include <benchmark/benchmark.h>

#include <chrono>
#include <memory>
#include <utility>
#include <vector>

#include "BLE_kovra/devices/HIDMonitor.h"
#include "BLE_kovra/l10n/L10n.h"
#include "BLE_kovra/platform/linux/desktop/GlibcLocale.h"
#include "bench/BenchHID.h"
#include "tests/fakes/FakeMainQueue.h"

namespace kovra {
namespace {

// A started monitor. After read() it has a subscriber, which discards each list at once.
struct Rig {
    FakeMainQueue queue;
    BenchHID hid;
    GlibcLocale locale;
    L10n texts{{"en"}};
    std::shared_ptr<HIDMonitor> monitor = HIDMonitor::create(hid, queue, locale, texts);

    Rig() { monitor->start(); }
    void read() {
        monitor->onDevicesChanged = [](std::vector<HIDDeviceInfo> list) { benchmark::DoNotOptimize(list.data()); };
    }
};

// Reports a device that is already in the list. A quarter of the devices in the list is disconnected.
void publication(benchmark::State& state) {
    const std::vector<BenchDevice> devices = benchDevices(static_cast<std::size_t>(state.range(0)));
    Rig rig;
    for (const BenchDevice& device : devices) rig.hid.attached(device);
    for (std::size_t i = 0; i < devices.size(); i += 4) rig.hid.removed(devices[i]);
    rig.queue.advance(HIDMonitor::disconnectGrace);
    rig.read();
    for (auto _ : state) rig.hid.attached(devices[1]);
}
BENCHMARK(publication)->RangeMultiplier(10)->Range(10, 10000)->Unit(benchmark::kMicrosecond);

// Attaches all devices to a new monitor, as at the program's start. Each device causes one publication.
void start(benchmark::State& state) {
    const std::vector<BenchDevice> devices = benchDevices(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        Rig rig;
        rig.read();
        for (const BenchDevice& device : devices) rig.hid.attached(device);
    }
}
BENCHMARK(start)->Arg(1000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace kovra
