#include "BLE_kovra/core/AppState.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/fakes/FakePreferences.h"

namespace kovra {
namespace {

using Mode = AppState::BlockMode;
using Selection = AppState::Selection;

AppState::Selection loadedSelection(const PreferenceValue& stored) {
    FakePreferences preferences;
    preferences.stored.emplace("selectedDeviceIDs", stored);
    return AppState(preferences).selectedIDs.get();
}

bool loadedSwitch(const PreferenceValue& stored) {
    FakePreferences preferences;
    preferences.stored.emplace("isEnabled", stored);
    return AppState(preferences).isEnabled.get();
}

Mode loadedMode(const PreferenceValue& stored) {
    FakePreferences preferences;
    preferences.stored.emplace("blockMode", stored);
    return AppState(preferences).mode.get();
}

PreferenceArray array(std::initializer_list<PreferenceValue> elements) { return PreferenceArray(elements); }

TEST(AppStateTest, StartsFromAnEmptyStoreWithNothingChosenAndTheSwitchOn) {
    FakePreferences preferences;
    const AppState state(preferences);
    EXPECT_TRUE(state.devices.get().empty());
    EXPECT_TRUE(state.selectedIDs.get().empty());
    EXPECT_TRUE(state.isEnabled.get());
    EXPECT_EQ(state.mode.get(), Mode::onDevice);
    EXPECT_FALSE(state.blocking.get());
}

TEST(AppStateTest, LoadsWhatWasSaved) {
    FakePreferences preferences;
    preferences.stored = {{"selectedDeviceIDs", array({std::string("Mouse#1:2"), std::string("Ball#3:4")})},
                          {"isEnabled", false},
                          {"blockMode", std::string("always")}};
    const AppState state(preferences);
    EXPECT_EQ(state.selectedIDs.get(), (Selection{"Ball#3:4", "Mouse#1:2"}));
    EXPECT_FALSE(state.isEnabled.get());
    EXPECT_EQ(state.mode.get(), Mode::always);
}

TEST(AppStateTest, LoadingSavesNothing) {
    FakePreferences preferences;
    preferences.stored = {{"selectedDeviceIDs", array({std::string("a"), 5.0})}, {"blockMode", std::string("Always")}};
    const AppState state(preferences);
    EXPECT_TRUE(preferences.saves.empty());
}

TEST(AppStateTest, RejectsASelectionWithAForeignElement) {
    EXPECT_TRUE(loadedSelection(array({std::string("a"), 5.0})).empty());
    EXPECT_TRUE(loadedSelection(array({std::string("a"), true})).empty());
    EXPECT_TRUE(loadedSelection(array({std::string("a"), OtherPreference{}})).empty());
    EXPECT_TRUE(loadedSelection(array({std::string("a"), array({})})).empty());
}

TEST(AppStateTest, MergesDuplicatesInASelection) {
    EXPECT_EQ(loadedSelection(array({std::string("a"), std::string("a")})), Selection{"a"});
}

TEST(AppStateTest, AcceptsOnlyAnArrayAsASelection) {
    EXPECT_TRUE(loadedSelection(std::string("a")).empty());
    EXPECT_TRUE(loadedSelection(true).empty());
    EXPECT_TRUE(loadedSelection(1.0).empty());
    EXPECT_TRUE(loadedSelection(OtherPreference{}).empty());
}

TEST(AppStateTest, ReadsAStoredSwitchAsTheStoreReadsBooleans) {
    EXPECT_FALSE(loadedSwitch(false));
    EXPECT_TRUE(loadedSwitch(true));
    EXPECT_FALSE(loadedSwitch(0.0));
    EXPECT_TRUE(loadedSwitch(2.0));
    EXPECT_TRUE(loadedSwitch(-1.0));
    EXPECT_TRUE(loadedSwitch(std::string("YES")));
    EXPECT_TRUE(loadedSwitch(std::string("1")));
    EXPECT_FALSE(loadedSwitch(std::string("no")));
    EXPECT_FALSE(loadedSwitch(std::string("")));
    EXPECT_FALSE(loadedSwitch(array({})));
    EXPECT_FALSE(loadedSwitch(OtherPreference{}));
}

TEST(AppStateTest, KeepsModeOnDeviceForAnUnknownText) {
    EXPECT_EQ(loadedMode(std::string("always")), Mode::always);
    EXPECT_EQ(loadedMode(std::string("onDevice")), Mode::onDevice);
    EXPECT_EQ(loadedMode(std::string("Always")), Mode::onDevice);
    EXPECT_EQ(loadedMode(std::string("")), Mode::onDevice);
    EXPECT_EQ(loadedMode(std::string("always ")), Mode::onDevice);
    EXPECT_EQ(loadedMode(true), Mode::onDevice);
}

TEST(AppStateTest, ReadsExactlyTwoModes) {
    EXPECT_EQ(AppState::modeFromRawValue("always"), Mode::always);
    EXPECT_EQ(AppState::modeFromRawValue("onDevice"), Mode::onDevice);
    EXPECT_EQ(AppState::modeFromRawValue("ondevice"), std::nullopt);
    EXPECT_EQ(AppState::modeFromRawValue(""), std::nullopt);
    EXPECT_EQ(AppState::rawValue(Mode::always), "always");
    EXPECT_EQ(AppState::rawValue(Mode::onDevice), "onDevice");
}

TEST(AppStateTest, SavesTheSelectionAsAnArrayOfTexts) {
    FakePreferences preferences;
    AppState state(preferences);
    state.selectedIDs.set({"b", "a"});
    EXPECT_TRUE(preferences.saves.empty());  // a change alone saves nothing
    state.saveSelected();
    ASSERT_EQ(preferences.saves.size(), 1U);
    EXPECT_EQ(preferences.saves[0].key, "selectedDeviceIDs");
    EXPECT_EQ(loadedSelection(preferences.saves[0].value), (Selection{"a", "b"}));
}

TEST(AppStateTest, SavesAnEmptySelectionAsAnEmptyArray) {
    FakePreferences preferences;
    preferences.stored.emplace("selectedDeviceIDs", array({std::string("a")}));
    AppState state(preferences);
    state.selectedIDs.set({});
    state.saveSelected();
    const auto stored = preferences.object("selectedDeviceIDs");
    ASSERT_TRUE(stored.has_value());
    const auto* saved = std::get_if<PreferenceArray>(&*stored);
    ASSERT_NE(saved, nullptr);
    EXPECT_TRUE(saved->empty());
}

TEST(AppStateTest, SavesTheModeAsItsText) {
    FakePreferences preferences;
    AppState state(preferences);
    state.mode.set(Mode::always);
    state.saveMode();
    state.mode.set(Mode::onDevice);
    state.saveMode();
    ASSERT_EQ(preferences.saves.size(), 2U);
    EXPECT_EQ(std::get<std::string>(preferences.saves[0].value), "always");
    EXPECT_EQ(std::get<std::string>(preferences.saves[1].value), "onDevice");
    EXPECT_EQ(preferences.saves[1].key, "blockMode");
}

struct Listed {
    FakePreferences preferences;
    AppState state{preferences};

    Listed(std::vector<HIDDeviceInfo> devices, Selection selection) {
        state.devices.set(std::move(devices));
        state.selectedIDs.set(std::move(selection));
    }
    bool anySelectedConnected() const { return state.anySelectedConnected(); }
};

TEST(AppStateTest, FindsASelectedDeviceThatIsConnected) {
    EXPECT_TRUE(Listed({{"a", "A", true}, {"b", "B", true}}, {"b"}).anySelectedConnected());
}

TEST(AppStateTest, IgnoresASelectedDeviceThatIsDisconnected) {
    EXPECT_FALSE(Listed({{"a", "A", true}, {"b", "B", false}}, {"b"}).anySelectedConnected());
}

TEST(AppStateTest, IgnoresASelectedDeviceThatIsNotListed) {
    EXPECT_FALSE(Listed({{"a", "A", true}}, {"b"}).anySelectedConnected());
}

TEST(AppStateTest, FindsNothingInAnEmptyListOrForAnEmptySelection) {
    EXPECT_FALSE(Listed({}, {"a"}).anySelectedConnected());
    EXPECT_FALSE(Listed({{"a", "A", true}}, {}).anySelectedConnected());
}

TEST(AppStateTest, FindsDevicesByKeyNotByName) {
    EXPECT_FALSE(Listed({{"a", "Mouse", true}}, {"Mouse"}).anySelectedConnected());
}

}  // namespace
}  // namespace kovra
