// Measures the work of both processes for one change while the settings window is open: they build and encode the view,
// decode it, lay it out and paint it.

#include <benchmark/benchmark.h>

#include <QApplication>
#include <cstdlib>
#include <string>
#include <vector>

#include "BLE_kovra/app/settings/SettingsView.h"
#include "BLE_kovra/core/AppState.h"
#include "BLE_kovra/l10n/L10n.h"
#include "BLE_kovra/platform/linux/ui/elements/Surface.h"
#include "BLE_kovra/platform/linux/ui/style/Points.h"
#include "BLE_kovra/platform/linux/ui/windows/ElementTree.h"
#include "BLE_kovra/platform/linux/wire/Encoding.h"
#include "tests/fakes/FakePreferences.h"

namespace kovra {
namespace {

struct NoActions : UserActions {
    std::uint64_t changed(std::vector<std::string>, std::variant<bool, std::string>) override { return 0; }
    void followed(std::vector<std::string>) override {}
    void scrolled() override {}
};

// The contents of the settings window, shown with Qt's platform `offscreen`.
class OpenWindow {
  public:
    explicit OpenWindow(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            const std::string name = "Mouse " + std::to_string(i);
            devices_.push_back({name + "#1:" + std::to_string(i), name, true});
        }
        state_.devices.set(devices_);
        surface_.resize(pixels(440), pixels(480));
        surface_.show();
    }

    void show() {
        const auto message = decodeToWindow(line());
        const auto& window = std::get<ShowWindow>(message.value());
        view_.show(window.content, window.acknowledged);
        view_.layOut(surface_.size());
        QApplication::processEvents();
    }
    void unplugOrPlug(std::size_t index) {
        devices_[index].connected = !devices_[index].connected;
        state_.devices.set(devices_);
    }

  private:
    std::string line() const {
        ShowWindow window;
        window.content = SettingsView(state_, texts_).body();
        return encode(ToWindow(std::move(window)));
    }

    std::vector<HIDDeviceInfo> devices_;
    FakePreferences preferences_;
    mutable AppState state_{preferences_};
    L10n texts_{{"en"}};
    Surface surface_;
    NoActions actions_;
    ElementTree view_{surface_, actions_};
};

void OneChangeOf200Devices(benchmark::State& state) {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    int count = 1;
    std::string name = "bench";
    char* arguments[] = {name.data(), nullptr};
    const QApplication application(count, arguments);
    OpenWindow window(200);
    window.show();
    std::size_t index = 0;
    for (auto _ : state) {
        window.unplugOrPlug(index++ % 8);  // one of the visible rows
        window.show();
    }
}
BENCHMARK(OneChangeOf200Devices)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace kovra
