#include "BLE_kovra/app/settings/SettingsView.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "BLE_kovra/core/AppState.h"
#include "BLE_kovra/l10n/L10n.h"
#include "tests/fakes/FakePreferences.h"
#include "tests/support/ViewDump.h"

namespace kovra {
namespace {

using Mode = AppState::BlockMode;
using Selection = AppState::Selection;

// Positions among the children of the window's column.
constexpr std::size_t blockToggle = 1, modePicker = 2, deviceArea = 6, statusLine = 8;

struct ViewRig {
    explicit ViewRig(const char* language = "en") : texts({language}) {}

    View body() const {
        SettingsView view(state, texts);
        view.setAdvice(advice);
        return view.body();
    }
    std::string dump() const { return ViewDump::of(body()); }
    std::string dump(std::size_t child) const { return ViewDump::of(body().children.at(child)); }

    void set(const std::string& id, bool isOn) const {
        const View view = body();
        std::get<Toggle>(viewAt(view, {std::to_string(deviceArea), "0", id}).kind).set(isOn);
    }

    std::string advice;
    FakePreferences preferences;
    mutable AppState state{preferences};
    L10n texts;
};

const HIDDeviceInfo here{"A#1:2", "Alpha", true};
const HIDDeviceInfo gone{"B#1:3", "Beta", false};

TEST(SettingsViewTest, ReadsFromTopToBottomLikeTheWindow) {
    ViewRig rig;
    rig.state.devices.set({here, gone});
    rig.state.selectedIDs.set({gone.id});
    EXPECT_EQ(rig.dump(), R"(column leading spacing 14 | padding 20 by 20 | frame width 440
  "BLE-kovra — trackpad control" | headline
  [x] | body
    "Mute trackpad"
  "Mode:" ( ) "Always" always (o) "When the selected mouse is connected" onDevice
  ---
  "Choose a mouse" | subheadline bold
  "In “when a mouse is connected” mode the trackpad is muted while the selected device is connected. Disconnect the mouse — the trackpad works again." | caption | secondary | fixed vertically
  scroll | frame max height 200
    column leading spacing 6 | padding 0 by 4
      <A#1:2> [ ]
        row center
          circle green | frame width 8 height 8
          "Alpha"
          spacer
      <B#1:3> [x]
        row center
          circle gray at 0.4 | frame width 8 height 8
          "Beta"
          spacer
          "disconnected" | caption2 | secondary
  ---
  row center
    circle gray at 0.4 | frame width 8 height 8
    "Trackpad active" | caption | secondary
  row center spacing 4 | caption2 | secondary | frame max width unbounded
    "Developed by: Tamsin Orlek ·"
    link "support@ble-kovra.example" to mailto:support@ble-kovra.example
)");
}

TEST(SettingsViewTest, HasAnAdviceAboveTheFooter) {
    ViewRig rig;
    rig.advice = "status.blocked";
    EXPECT_NE(rig.dump().find(R"(
    "Trackpad active" | caption | secondary
  "Trackpad muted" | caption | secondary | fixed vertically
  row center spacing 4 | caption2)"),
              std::string::npos);
    rig.advice = "";
    EXPECT_EQ(rig.dump().find("Trackpad muted"), std::string::npos);
}

TEST(SettingsViewTest, ShowsATextIfThereIsNoDevice) {
    const ViewRig rig;
    EXPECT_EQ(rig.dump(deviceArea),
              "\"No devices found. Connect a mouse.\" | secondary | frame max width unbounded | padding 0 by 16\n");
}

TEST(SettingsViewTest, KeepsTheMonitorsOrder) {
    ViewRig rig;
    rig.state.devices.set({gone, here});
    const View view = rig.body();
    const View list = viewAt(view, {std::to_string(deviceArea), "0"});
    EXPECT_EQ(list.children.at(0).id, gone.id);
    EXPECT_EQ(list.children.at(1).id, here.id);
}

TEST(SettingsViewTest, ShowsNamesLiterally) {
    ViewRig rig;
    rig.state.devices.set({{"x", "device.disconnected <b>&amp; _A\n", true}});
    EXPECT_NE(rig.dump().find("\"device.disconnected <b>&amp; _A\n\""), std::string::npos);
}

TEST(SettingsViewTest, SpeaksTheUsersLanguage) {
    const ViewRig rig("ru");
    const L10n russian({"ru"});
    const std::string dump = rig.dump();
    for (const char* key :
         {"settings.title", "block", "settings.mode", "mode.always", "mode.onDevice", "settings.chooseMouse",
          "settings.hint", "settings.noDevices", "status.active", "settings.developedBy"}) {
        EXPECT_NE(dump.find('"' + russian.s(key) + '"'), std::string::npos) << key;
    }
}

TEST(SettingsViewTest, TheSwitchWritesIsEnabled) {
    const ViewRig rig;
    const View view = rig.body();
    const auto& toggle = std::get<Toggle>(view.children.at(blockToggle).kind);
    EXPECT_TRUE(toggle.isOn);
    toggle.set(false);
    EXPECT_FALSE(rig.state.isEnabled.get());
    toggle.set(true);
    EXPECT_TRUE(rig.state.isEnabled.get());
}

TEST(SettingsViewTest, ThePickerWritesEvenTheSelectedModeAtOnce) {
    const ViewRig rig;
    int announced = 0;
    const Subscription token = rig.state.mode.subscribe([&](Mode) { ++announced; }, CurrentValue::drop);
    const View view = rig.body();
    const auto& picker = std::get<Picker>(view.children.at(modePicker).kind);
    picker.select("always");
    EXPECT_EQ(rig.state.mode.get(), Mode::always);
    picker.select("always");
    EXPECT_EQ(announced, 2);
    picker.select("onDevice");
    EXPECT_EQ(rig.state.mode.get(), Mode::onDevice);
    picker.select("sometimes");
    EXPECT_EQ(announced, 3);
}

TEST(SettingsViewTest, ATickAddsItsDeviceAndNoOther) {
    const ViewRig rig;
    rig.state.devices.set({here, gone});
    rig.state.selectedIDs.set({"not listed"});
    rig.set(gone.id, true);
    EXPECT_EQ(rig.state.selectedIDs.get(), (Selection{gone.id, "not listed"}));
    rig.set(here.id, true);
    rig.set(gone.id, false);
    EXPECT_EQ(rig.state.selectedIDs.get(), (Selection{here.id, "not listed"}));
}

TEST(SettingsViewTest, OneTickIsOneAnnouncement) {
    const ViewRig rig;
    rig.state.devices.set({here});
    int announced = 0;
    const Subscription token =
        rig.state.selectedIDs.subscribe([&](const Selection&) { ++announced; }, CurrentValue::drop);
    rig.set(here.id, true);
    EXPECT_EQ(announced, 1);
}

TEST(SettingsViewTest, ARowMadeBeforeTheListWasReorderedEditsItsOwnDevice) {
    const ViewRig rig;
    rig.state.devices.set({here, gone});
    const View before = rig.body();
    const View row = viewAt(before, {std::to_string(deviceArea), "0"}).children.at(0);
    rig.state.devices.set({gone, here});
    std::get<Toggle>(row.kind).set(true);
    EXPECT_EQ(rig.state.selectedIDs.get(), Selection{here.id});
}

TEST(SettingsViewTest, RowsCanBeTickedWhileMutingIsOffAndInModeAlways) {
    const ViewRig rig;
    rig.state.devices.set({here, gone});
    rig.state.isEnabled.set(false);
    rig.set(here.id, true);
    rig.state.mode.set(Mode::always);
    rig.set(gone.id, true);
    rig.set(here.id, false);
    EXPECT_EQ(rig.state.selectedIDs.get(), Selection{gone.id});
}

TEST(SettingsViewTest, TheStatusLineFollowsTheDecisionAndNotTheSwitch) {
    const ViewRig rig;
    const std::string active =
        "row center\n  circle gray at 0.4 | frame width 8 height 8\n  \"Trackpad active\" | caption | secondary\n";
    const std::string muted =
        "row center\n  circle green | frame width 8 height 8\n  \"Trackpad muted\" | caption | secondary\n";
    EXPECT_EQ(rig.dump(statusLine), active);
    rig.state.mode.set(Mode::always);
    EXPECT_EQ(rig.dump(statusLine), active);
    rig.state.blocking.set(true);
    EXPECT_EQ(rig.dump(statusLine), muted);
    rig.state.isEnabled.set(false);
    EXPECT_EQ(rig.dump(statusLine), muted);
}

}  // namespace
}  // namespace kovra
