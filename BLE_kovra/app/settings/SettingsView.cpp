#include "BLE_kovra/app/settings/SettingsView.h"

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "BLE_kovra/app/MailLink.h"
#include "BLE_kovra/core/AppState.h"
#include "BLE_kovra/l10n/L10n.h"
#include "BLE_kovra/l10n/SupportAddress.h"

namespace kovra {

namespace {

constexpr double windowWidth = 440;
constexpr double edge = 20;
constexpr double longestList = 200;

View text(std::string content) { return {Text{std::move(content)}, {}, {}, {}}; }

View dot(bool isLit) {
    const Circle circle = isLit ? Circle{Color::green, 1} : Circle{Color::gray, 0.4};
    return View{circle, {}, {}, {}}.frame({.width = 8, .height = 8});
}

View row(std::optional<double> spacing, std::vector<View> children) {
    return {Stack{Stack::Axis::horizontal, Alignment::center, spacing}, std::move(children), {}, {}};
}

View column(double spacing, std::vector<View> children) {
    return {Stack{Stack::Axis::vertical, Alignment::leading, spacing}, std::move(children), {}, {}};
}

std::string requireLink(std::string_view address) {
    auto link = mailLink(address);
    if (!link) std::abort();
    return *std::move(link);
}

}  // namespace

View SettingsView::body() const {
    const Toggle block{state_.isEnabled.get(), [&state = state_](bool isOn) { state.isEnabled.set(isOn); }};

    using Mode = AppState::BlockMode;
    Picker mode;
    mode.title = texts_.s("settings.mode");
    mode.options = {{texts_.s("mode.always"), std::string(AppState::rawValue(Mode::always))},
                    {texts_.s("mode.onDevice"), std::string(AppState::rawValue(Mode::onDevice))}};
    mode.selection = AppState::rawValue(state_.mode.get());
    mode.select = [&state = state_](const std::string& tag) {
        if (const auto chosen = AppState::modeFromRawValue(tag)) state.mode.set(*chosen);
    };

    std::vector<View> parts{text(texts_.s("settings.title")).font(Font::headline),
                            View{block, {text(texts_.s("block"))}, {}, {}}.font(Font::body),
                            {mode, {}, {}, {}},
                            {Divider{}, {}, {}, {}},
                            text(texts_.s("settings.chooseMouse")).font(Font::subheadline, true),
                            caption("settings.hint"),
                            deviceArea(),
                            {Divider{}, {}, {}, {}},
                            statusLine()};
    if (!advice_.empty()) parts.push_back(caption(advice_));
    parts.push_back(footer());
    return column(14, std::move(parts)).padding(edge).frame({.width = windowWidth});
}

View SettingsView::caption(const std::string& key) const {
    return text(texts_.s(key)).font(Font::caption).foregroundColor(Color::secondary).fixedSize(false, true);
}

View SettingsView::deviceArea() const {
    const auto& devices = state_.devices.get();
    if (devices.empty()) {
        return text(texts_.s("settings.noDevices"))
            .foregroundColor(Color::secondary)
            .frame({.maxWidth = Frame::unbounded})
            .verticalPadding(16);
    }
    std::vector<View> rows;
    rows.reserve(devices.size());
    for (const HIDDeviceInfo& device : devices) rows.push_back(deviceRow(device));
    std::vector<View> scrolled;
    scrolled.push_back(column(6, std::move(rows)).verticalPadding(4));
    return View{ScrollView{}, std::move(scrolled), {}, {}}.frame({.maxHeight = longestList});
}

View SettingsView::deviceRow(const HIDDeviceInfo& device) const {
    const auto tick = [&state = state_, id = device.id](bool isOn) {
        state.selectedIDs.change([&](AppState::Selection& selected) {
            if (isOn)
                selected.insert(id);
            else
                selected.erase(id);
        });
    };
    std::vector<View> label{dot(device.connected), text(device.name), {Spacer{}, {}, {}, {}}};
    if (!device.connected) {
        label.push_back(text(texts_.s("device.disconnected")).font(Font::caption2).foregroundColor(Color::secondary));
    }
    std::vector<View> labels;
    labels.push_back(row({}, std::move(label)));
    return View{Toggle{state_.selectedIDs.get().contains(device.id), tick}, std::move(labels), {}, {}}.identified(
        device.id);
}

View SettingsView::statusLine() const {
    const bool isMuted = state_.blocking.get();
    return row({}, {dot(isMuted), text(texts_.s(isMuted ? "status.blocked" : "status.active"))
                                      .font(Font::caption)
                                      .foregroundColor(Color::secondary)});
}

View SettingsView::footer() const {
    return row(4, {text(texts_.s("settings.developedBy")),
                   {Link{supportAddress, requireLink(supportAddress)}, {}, {}, {}}})
        .font(Font::caption2)
        .foregroundColor(Color::secondary)
        .frame({.maxWidth = Frame::unbounded});
}

}  // namespace kovra
