#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "BLE_kovra/platform/HIDManager.h"
#include "tests/fakes/FakeHID.h"

namespace kovra {

using NamesTold = std::vector<std::string>;

// What every HID manager promises. A Driver is a machine: `service()`, `attach(device)` which answers what it attached,
// `detach(attached)`, `rename(attached, name)`, and `settle()`, which lets the event loop turn until there is nothing
// more to tell.
template <typename Driver>
class HIDManagerContract : public testing::Test {
  protected:
    // What a callback was told, and could still tell when the callback had returned.
    struct Told {
        bool isAttachment = false;
        std::optional<std::uint64_t> number;
        std::uint64_t handle = 0;
        std::optional<std::int64_t> vendor;
        std::optional<std::int64_t> product;
        std::optional<std::string> name;
        std::uint64_t id() const { return number.value_or(handle); }
    };

    void makeManager() {
        manager_ = driver_.service().createManager();
        manager_->registerMatchingCallback([this](const HIDDevice& device) { record(true, device); });
        manager_->registerRemovalCallback([this](const HIDDevice& device) { record(false, device); });
    }
    void open() {
        makeManager();
        manager_->open();
        driver_.settle();
    }
    void record(bool isAttachment, const HIDDevice& device) {
        told_.push_back({isAttachment, device.registryEntryID(), device.handle(), device.integerProperty("VendorID"),
                         device.integerProperty("ProductID"), device.stringProperty("Product")});
    }
    // The names told of, each after + or -.
    NamesTold names() const {
        NamesTold names;
        for (const Told& told : told_) names.push_back((told.isAttachment ? "+" : "-") + told.name.value_or("?"));
        return names;
    }

    Driver driver_;
    std::vector<Told> told_;
    std::unique_ptr<HIDManager> manager_;
};

TYPED_TEST_SUITE_P(HIDManagerContract);

TYPED_TEST_P(HIDManagerContract, SaysNothingFromInsideOpen) {
    this->driver_.attach(aMouse("apple"));
    this->makeManager();
    this->manager_->open();
    EXPECT_TRUE(this->told_.empty());
    this->driver_.settle();
    EXPECT_EQ(this->told_.size(), 1U);
}

TYPED_TEST_P(HIDManagerContract, SaysNothingBeforeItIsOpened) {
    this->makeManager();
    this->driver_.attach(aMouse("apple"));
    this->driver_.settle();
    EXPECT_TRUE(this->told_.empty());
}

TYPED_TEST_P(HIDManagerContract, TellsOfEachInterfaceThatIsAttachedAlready) {
    this->driver_.attach(aMouse("apple").interfaces(2));
    this->driver_.attach(aMouse("pear"));
    this->open();
    EXPECT_EQ(this->names(), (NamesTold{"+apple", "+apple", "+pear"}));
}

TYPED_TEST_P(HIDManagerContract, TellsNothingOfWhatWentBeforeItWasOpened) {
    this->driver_.detach(this->driver_.attach(aMouse("apple")));
    this->open();
    EXPECT_TRUE(this->told_.empty());
}

TYPED_TEST_P(HIDManagerContract, TellsOfWhatComesLater) {
    this->open();
    this->driver_.attach(aMouse("apple"));
    this->driver_.settle();
    EXPECT_EQ(this->names(), (NamesTold{"+apple"}));
}

TYPED_TEST_P(HIDManagerContract, TellsOfARemovalUnderTheNumberOfTheAttachment) {
    this->open();
    const auto mouse = this->driver_.attach(aMouse("apple"));
    this->driver_.settle();
    this->driver_.detach(mouse);
    this->driver_.settle();
    ASSERT_EQ(this->names(), (NamesTold{"+apple", "-apple"}));
    EXPECT_TRUE(this->told_[0].number.has_value());
    EXPECT_EQ(this->told_[0].number, this->told_[1].number);
    EXPECT_EQ(this->told_[0].handle, this->told_[1].handle);
}

TYPED_TEST_P(HIDManagerContract, TellsOfTheRemovalOfWhatWasThereBefore) {
    const auto mouse = this->driver_.attach(aMouse("apple"));
    this->open();
    this->driver_.detach(mouse);
    this->driver_.settle();
    ASSERT_EQ(this->names(), (NamesTold{"+apple", "-apple"}));
    EXPECT_EQ(this->told_[0].id(), this->told_[1].id());
}

TYPED_TEST_P(HIDManagerContract, TellsOfANewNameAsARemovalAndAnAttachment) {
    this->open();
    const auto mouse = this->driver_.attach(aMouse("apple"));
    this->driver_.settle();
    this->driver_.rename(mouse, "pear");
    this->driver_.settle();
    ASSERT_EQ(this->names(), (NamesTold{"+apple", "-apple", "+pear"}));
    EXPECT_EQ(this->told_[0].id(), this->told_[1].id());
}

TYPED_TEST_P(HIDManagerContract, TellsEachInterfaceOfADeviceApart) {
    this->open();
    const auto mouse = this->driver_.attach(aMouse("apple").interfaces(2));
    this->driver_.settle();
    this->driver_.detach(mouse);
    this->driver_.settle();
    ASSERT_EQ(this->names(), (NamesTold{"+apple", "+apple", "-apple", "-apple"}));
    EXPECT_NE(this->told_[0].id(), this->told_[1].id());
    EXPECT_EQ(this->told_[0].id(), this->told_[2].id());
    EXPECT_EQ(this->told_[1].id(), this->told_[3].id());
}

TYPED_TEST_P(HIDManagerContract, TellsTwoDevicesOfOneModelApart) {
    this->open();
    const auto first = this->driver_.attach(aMouse("apple"));
    const auto second = this->driver_.attach(aMouse("apple"));
    this->driver_.settle();
    this->driver_.detach(second);
    this->driver_.settle();
    ASSERT_EQ(this->names(), (NamesTold{"+apple", "+apple", "-apple"}));
    EXPECT_NE(this->told_[0].id(), this->told_[1].id());
    EXPECT_EQ(this->told_[1].id(), this->told_[2].id());
}

TYPED_TEST_P(HIDManagerContract, NeverUsesANumberAgain) {
    this->open();
    const auto mouse = this->driver_.attach(aMouse("apple"));
    this->driver_.settle();
    this->driver_.detach(mouse);
    this->driver_.settle();
    this->driver_.attach(aMouse("apple"));
    this->driver_.settle();
    ASSERT_EQ(this->names(), (NamesTold{"+apple", "-apple", "+apple"}));
    EXPECT_NE(this->told_[0].id(), this->told_[2].id());
}

TYPED_TEST_P(HIDManagerContract, GivesTheDevicesNumbersOnBothSides) {
    this->open();
    const auto mouse = this->driver_.attach(aMouse("apple").ids(4660, 22136));
    this->driver_.settle();
    this->driver_.detach(mouse);
    this->driver_.settle();
    ASSERT_EQ(this->told_.size(), 2U);
    for (const auto& told : this->told_) {
        EXPECT_EQ(told.vendor, 4660);
        EXPECT_EQ(told.product, 22136);
    }
}

TYPED_TEST_P(HIDManagerContract, HasNoNameForANamelessDevice) {
    this->open();
    this->driver_.attach(aNamelessDevice());
    this->driver_.settle();
    ASSERT_EQ(this->told_.size(), 1U);
    EXPECT_EQ(this->told_[0].name, std::nullopt);
    EXPECT_NE(this->told_[0].vendor, std::nullopt);
}

TYPED_TEST_P(HIDManagerContract, HasNoNumbersForADeviceThatReportsNone) {
    this->open();
    this->driver_.attach(aMouse("apple").ids(std::nullopt, std::nullopt));
    this->driver_.settle();
    ASSERT_EQ(this->names(), (NamesTold{"+apple"}));
    EXPECT_EQ(this->told_[0].vendor, std::nullopt);
    EXPECT_EQ(this->told_[0].product, std::nullopt);
}

TYPED_TEST_P(HIDManagerContract, HasNoTextForANumberNorANumberForAText) {
    this->makeManager();
    int asked = 0;
    this->manager_->registerMatchingCallback([&](const HIDDevice& device) {
        ++asked;
        EXPECT_EQ(device.stringProperty("VendorID"), std::nullopt);
        EXPECT_EQ(device.integerProperty("Product"), std::nullopt);
        EXPECT_EQ(device.stringProperty("Manufacturer"), std::nullopt);
        EXPECT_EQ(device.integerProperty(""), std::nullopt);
    });
    this->manager_->open();
    this->driver_.attach(aMouse("apple"));
    this->driver_.settle();
    EXPECT_EQ(asked, 1);
}

TYPED_TEST_P(HIDManagerContract, TellsInterfacesWithoutARegistryEntryApartByTheirHandles) {
    this->open();
    const auto first = this->driver_.attach(aMouse("apple").withoutRegistryEntry());
    const auto second = this->driver_.attach(aMouse("apple").withoutRegistryEntry());
    this->driver_.settle();
    this->driver_.detach(first);
    this->driver_.settle();
    ASSERT_EQ(this->names(), (NamesTold{"+apple", "+apple", "-apple"}));
    for (const auto& told : this->told_) EXPECT_EQ(told.number, std::nullopt);
    EXPECT_NE(this->told_[0].handle, this->told_[1].handle);
    EXPECT_EQ(this->told_[0].handle, this->told_[2].handle);
}

TYPED_TEST_P(HIDManagerContract, SaysNothingOnceItIsGone) {
    this->open();
    const auto mouse = this->driver_.attach(aMouse("apple"));
    this->driver_.settle();
    this->driver_.detach(mouse);  // to be told, but not yet
    this->manager_.reset();
    this->driver_.attach(aMouse("pear"));
    this->driver_.settle();
    EXPECT_EQ(this->names(), (NamesTold{"+apple"}));
}

TYPED_TEST_P(HIDManagerContract, SaysNothingIfItGoesBetweenOpenAndTheFirstTurn) {
    this->driver_.attach(aMouse("apple"));
    this->makeManager();
    this->manager_->open();
    this->manager_.reset();
    this->driver_.settle();
    EXPECT_TRUE(this->told_.empty());
}

TYPED_TEST_P(HIDManagerContract, MayBeDestroyedFromInsideItsCallback) {
    this->driver_.attach(aMouse("apple").interfaces(3));
    this->makeManager();
    this->manager_->registerMatchingCallback([this](const HIDDevice& device) {
        this->manager_.reset();
        this->record(true, device);
    });
    this->manager_->open();
    this->driver_.settle();
    EXPECT_EQ(this->names(), (NamesTold{"+apple"}));
}

TYPED_TEST_P(HIDManagerContract, StartsAfreshWithEachManager) {
    const auto mouse = this->driver_.attach(aMouse("apple"));
    this->open();
    this->manager_.reset();
    this->open();
    this->driver_.detach(mouse);
    this->driver_.settle();
    ASSERT_EQ(this->names(), (NamesTold{"+apple", "+apple", "-apple"}));
    EXPECT_EQ(this->told_[0].id(), this->told_[1].id());
}

TYPED_TEST_P(HIDManagerContract, NeedsNoCallbacks) {
    this->manager_ = this->driver_.service().createManager();
    this->manager_->open();
    this->driver_.detach(this->driver_.attach(aMouse("apple")));
    this->driver_.settle();
    EXPECT_TRUE(this->told_.empty());
}

REGISTER_TYPED_TEST_SUITE_P(HIDManagerContract, SaysNothingFromInsideOpen, SaysNothingBeforeItIsOpened,
                            TellsOfEachInterfaceThatIsAttachedAlready, TellsNothingOfWhatWentBeforeItWasOpened,
                            TellsOfWhatComesLater, TellsOfARemovalUnderTheNumberOfTheAttachment,
                            TellsOfTheRemovalOfWhatWasThereBefore, TellsOfANewNameAsARemovalAndAnAttachment,
                            TellsEachInterfaceOfADeviceApart, TellsTwoDevicesOfOneModelApart, NeverUsesANumberAgain,
                            GivesTheDevicesNumbersOnBothSides, HasNoNameForANamelessDevice,
                            HasNoNumbersForADeviceThatReportsNone, HasNoTextForANumberNorANumberForAText,
                            TellsInterfacesWithoutARegistryEntryApartByTheirHandles, SaysNothingOnceItIsGone,
                            SaysNothingIfItGoesBetweenOpenAndTheFirstTurn, MayBeDestroyedFromInsideItsCallback,
                            StartsAfreshWithEachManager, NeedsNoCallbacks);

}  // namespace kovra
