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

using ReportedNames = std::vector<std::string>;

// The contract of HIDManager. A Driver provides the `service()` of a simulated machine. `attach(device)` returns the
// attached device in the form that `detach(attached)` and `rename(attached, name)` take. `settle()` runs the event loop
// until it is idle.
template <typename Driver>
class HIDManagerContract : public testing::Test {
  protected:
    // What a callback received, copied while the device was valid.
    struct Report {
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
        reports_.push_back({isAttachment, device.registryEntryID(), device.handle(), device.integerProperty("VendorID"),
                            device.integerProperty("ProductID"), device.stringProperty("Product")});
    }
    // Returns the reported names, each with + for an attachment or - for a removal.
    ReportedNames names() const {
        ReportedNames names;
        for (const Report& report : reports_)
            names.push_back((report.isAttachment ? "+" : "-") + report.name.value_or("?"));
        return names;
    }

    Driver driver_;
    std::vector<Report> reports_;
    std::unique_ptr<HIDManager> manager_;
};

TYPED_TEST_SUITE_P(HIDManagerContract);

TYPED_TEST_P(HIDManagerContract, ReportsNothingInsideOpen) {
    this->driver_.attach(aMouse("apple"));
    this->makeManager();
    this->manager_->open();
    EXPECT_TRUE(this->reports_.empty());
    this->driver_.settle();
    EXPECT_EQ(this->reports_.size(), 1U);
}

TYPED_TEST_P(HIDManagerContract, ReportsNothingBeforeItIsOpened) {
    this->makeManager();
    this->driver_.attach(aMouse("apple"));
    this->driver_.settle();
    EXPECT_TRUE(this->reports_.empty());
}

TYPED_TEST_P(HIDManagerContract, ReportsEachAttachedInterface) {
    this->driver_.attach(aMouse("apple").interfaces(2));
    this->driver_.attach(aMouse("pear"));
    this->open();
    EXPECT_EQ(this->names(), (ReportedNames{"+apple", "+apple", "+pear"}));
}

TYPED_TEST_P(HIDManagerContract, IgnoresDevicesRemovedBeforeItIsOpened) {
    this->driver_.detach(this->driver_.attach(aMouse("apple")));
    this->open();
    EXPECT_TRUE(this->reports_.empty());
}

TYPED_TEST_P(HIDManagerContract, ReportsLaterAttachments) {
    this->open();
    this->driver_.attach(aMouse("apple"));
    this->driver_.settle();
    EXPECT_EQ(this->names(), (ReportedNames{"+apple"}));
}

TYPED_TEST_P(HIDManagerContract, ReportsARemovalWithTheNumberOfTheAttachment) {
    this->open();
    const auto mouse = this->driver_.attach(aMouse("apple"));
    this->driver_.settle();
    this->driver_.detach(mouse);
    this->driver_.settle();
    ASSERT_EQ(this->names(), (ReportedNames{"+apple", "-apple"}));
    EXPECT_TRUE(this->reports_[0].number.has_value());
    EXPECT_EQ(this->reports_[0].number, this->reports_[1].number);
    EXPECT_EQ(this->reports_[0].handle, this->reports_[1].handle);
}

TYPED_TEST_P(HIDManagerContract, ReportsTheRemovalOfADevicePresentBefore) {
    const auto mouse = this->driver_.attach(aMouse("apple"));
    this->open();
    this->driver_.detach(mouse);
    this->driver_.settle();
    ASSERT_EQ(this->names(), (ReportedNames{"+apple", "-apple"}));
    EXPECT_EQ(this->reports_[0].id(), this->reports_[1].id());
}

TYPED_TEST_P(HIDManagerContract, ReportsANewNameAsRemovalAndAttachment) {
    this->open();
    const auto mouse = this->driver_.attach(aMouse("apple"));
    this->driver_.settle();
    this->driver_.rename(mouse, "pear");
    this->driver_.settle();
    ASSERT_EQ(this->names(), (ReportedNames{"+apple", "-apple", "+pear"}));
    EXPECT_EQ(this->reports_[0].id(), this->reports_[1].id());
}

TYPED_TEST_P(HIDManagerContract, DistinguishesTheInterfacesOfADevice) {
    this->open();
    const auto mouse = this->driver_.attach(aMouse("apple").interfaces(2));
    this->driver_.settle();
    this->driver_.detach(mouse);
    this->driver_.settle();
    ASSERT_EQ(this->names(), (ReportedNames{"+apple", "+apple", "-apple", "-apple"}));
    EXPECT_NE(this->reports_[0].id(), this->reports_[1].id());
    EXPECT_EQ(this->reports_[0].id(), this->reports_[2].id());
    EXPECT_EQ(this->reports_[1].id(), this->reports_[3].id());
}

TYPED_TEST_P(HIDManagerContract, DistinguishesTwoDevicesOfOneModel) {
    this->open();
    const auto first = this->driver_.attach(aMouse("apple"));
    const auto second = this->driver_.attach(aMouse("apple"));
    this->driver_.settle();
    this->driver_.detach(second);
    this->driver_.settle();
    ASSERT_EQ(this->names(), (ReportedNames{"+apple", "+apple", "-apple"}));
    EXPECT_NE(this->reports_[0].id(), this->reports_[1].id());
    EXPECT_EQ(this->reports_[1].id(), this->reports_[2].id());
}

TYPED_TEST_P(HIDManagerContract, NeverReusesANumber) {
    this->open();
    const auto mouse = this->driver_.attach(aMouse("apple"));
    this->driver_.settle();
    this->driver_.detach(mouse);
    this->driver_.settle();
    this->driver_.attach(aMouse("apple"));
    this->driver_.settle();
    ASSERT_EQ(this->names(), (ReportedNames{"+apple", "-apple", "+apple"}));
    EXPECT_NE(this->reports_[0].id(), this->reports_[2].id());
}

TYPED_TEST_P(HIDManagerContract, ReportsTheIDsAtAttachmentAndRemoval) {
    this->open();
    const auto mouse = this->driver_.attach(aMouse("apple").ids(4660, 22136));
    this->driver_.settle();
    this->driver_.detach(mouse);
    this->driver_.settle();
    ASSERT_EQ(this->reports_.size(), 2U);
    for (const auto& report : this->reports_) {
        EXPECT_EQ(report.vendor, 4660);
        EXPECT_EQ(report.product, 22136);
    }
}

TYPED_TEST_P(HIDManagerContract, HasNoNameForANamelessDevice) {
    this->open();
    this->driver_.attach(aNamelessDevice());
    this->driver_.settle();
    ASSERT_EQ(this->reports_.size(), 1U);
    EXPECT_EQ(this->reports_[0].name, std::nullopt);
    EXPECT_NE(this->reports_[0].vendor, std::nullopt);
}

TYPED_TEST_P(HIDManagerContract, HasNoNumbersForADeviceThatReportsNone) {
    this->open();
    this->driver_.attach(aMouse("apple").ids(std::nullopt, std::nullopt));
    this->driver_.settle();
    ASSERT_EQ(this->names(), (ReportedNames{"+apple"}));
    EXPECT_EQ(this->reports_[0].vendor, std::nullopt);
    EXPECT_EQ(this->reports_[0].product, std::nullopt);
}

TYPED_TEST_P(HIDManagerContract, ReadsAPropertyOnlyByItsType) {
    this->makeManager();
    int calls = 0;
    this->manager_->registerMatchingCallback([&](const HIDDevice& device) {
        ++calls;
        EXPECT_EQ(device.stringProperty("VendorID"), std::nullopt);
        EXPECT_EQ(device.integerProperty("Product"), std::nullopt);
        EXPECT_EQ(device.stringProperty("Manufacturer"), std::nullopt);
        EXPECT_EQ(device.integerProperty(""), std::nullopt);
    });
    this->manager_->open();
    this->driver_.attach(aMouse("apple"));
    this->driver_.settle();
    EXPECT_EQ(calls, 1);
}

TYPED_TEST_P(HIDManagerContract, DistinguishesInterfacesWithoutARegistryEntryByHandle) {
    this->open();
    const auto first = this->driver_.attach(aMouse("apple").withoutRegistryEntry());
    const auto second = this->driver_.attach(aMouse("apple").withoutRegistryEntry());
    this->driver_.settle();
    this->driver_.detach(first);
    this->driver_.settle();
    ASSERT_EQ(this->names(), (ReportedNames{"+apple", "+apple", "-apple"}));
    for (const auto& report : this->reports_) EXPECT_EQ(report.number, std::nullopt);
    EXPECT_NE(this->reports_[0].handle, this->reports_[1].handle);
    EXPECT_EQ(this->reports_[0].handle, this->reports_[2].handle);
}

TYPED_TEST_P(HIDManagerContract, ReportsNothingAfterItsDestruction) {
    this->open();
    const auto mouse = this->driver_.attach(aMouse("apple"));
    this->driver_.settle();
    this->driver_.detach(mouse);  // not reported yet
    this->manager_.reset();
    this->driver_.attach(aMouse("pear"));
    this->driver_.settle();
    EXPECT_EQ(this->names(), (ReportedNames{"+apple"}));
}

TYPED_TEST_P(HIDManagerContract, ReportsNothingIfDestroyedBeforeTheFirstTurn) {
    this->driver_.attach(aMouse("apple"));
    this->makeManager();
    this->manager_->open();
    this->manager_.reset();
    this->driver_.settle();
    EXPECT_TRUE(this->reports_.empty());
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
    EXPECT_EQ(this->names(), (ReportedNames{"+apple"}));
}

TYPED_TEST_P(HIDManagerContract, ReportsEverythingToEachManager) {
    const auto mouse = this->driver_.attach(aMouse("apple"));
    this->open();
    this->manager_.reset();
    this->open();
    this->driver_.detach(mouse);
    this->driver_.settle();
    ASSERT_EQ(this->names(), (ReportedNames{"+apple", "+apple", "-apple"}));
    EXPECT_EQ(this->reports_[0].id(), this->reports_[1].id());
}

TYPED_TEST_P(HIDManagerContract, NeedsNoCallbacks) {
    this->manager_ = this->driver_.service().createManager();
    this->manager_->open();
    this->driver_.detach(this->driver_.attach(aMouse("apple")));
    this->driver_.settle();
    EXPECT_TRUE(this->reports_.empty());
}

REGISTER_TYPED_TEST_SUITE_P(HIDManagerContract, ReportsNothingInsideOpen, ReportsNothingBeforeItIsOpened,
                            ReportsEachAttachedInterface, IgnoresDevicesRemovedBeforeItIsOpened,
                            ReportsLaterAttachments, ReportsARemovalWithTheNumberOfTheAttachment,
                            ReportsTheRemovalOfADevicePresentBefore, ReportsANewNameAsRemovalAndAttachment,
                            DistinguishesTheInterfacesOfADevice, DistinguishesTwoDevicesOfOneModel, NeverReusesANumber,
                            ReportsTheIDsAtAttachmentAndRemoval, HasNoNameForANamelessDevice,
                            HasNoNumbersForADeviceThatReportsNone, ReadsAPropertyOnlyByItsType,
                            DistinguishesInterfacesWithoutARegistryEntryByHandle, ReportsNothingAfterItsDestruction,
                            ReportsNothingIfDestroyedBeforeTheFirstTurn, MayBeDestroyedFromInsideItsCallback,
                            ReportsEverythingToEachManager, NeedsNoCallbacks);

}  // namespace kovra
