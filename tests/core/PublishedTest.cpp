#include "BLE_kovra/core/Published.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kovra {
namespace {

using Heard = std::vector<int>;

TEST(PublishedTest, AnnouncesTheComingValueWhileTheOldOneStillStands) {
    Published<int> property(1);
    int announced = 0, standing = 0;
    const Subscription token = property.subscribe(
        [&](const int& value) {
            announced = value;
            standing = property.get();
        },
        CurrentValue::drop);
    property.set(2);
    EXPECT_EQ(announced, 2);
    EXPECT_EQ(standing, 1);
    EXPECT_EQ(property.get(), 2);
}

TEST(PublishedTest, DeliversTheCurrentValueAtSubscription) {
    Published<int> property(7);
    Heard heard;
    const Subscription token = property.subscribe([&](const int& value) { heard.push_back(value); });
    EXPECT_EQ(heard, Heard{7});
}

TEST(PublishedTest, DropsTheCurrentValueWhereAskedTo) {
    Published<int> property(7);
    Heard heard;
    const Subscription token =
        property.subscribe([&](const int& value) { heard.push_back(value); }, CurrentValue::drop);
    property.set(8);
    EXPECT_EQ(heard, Heard{8});
}

TEST(PublishedTest, AnnouncesAValueEqualToTheOneItHolds) {
    Published<int> property(7);
    Heard heard;
    const Subscription token =
        property.subscribe([&](const int& value) { heard.push_back(value); }, CurrentValue::drop);
    property.set(7);
    EXPECT_EQ(heard, Heard{7});
}

TEST(PublishedTest, TellsSubscribersInTheOrderInWhichTheyCame) {
    Published<int> property(0);
    std::string order;
    const Subscription first = property.subscribe([&](const int&) { order += 'a'; }, CurrentValue::drop);
    const Subscription second = property.subscribe([&](const int&) { order += 'b'; }, CurrentValue::drop);
    property.set(1);
    EXPECT_EQ(order, "ab");
}

TEST(PublishedTest, AnnouncesAnEditInPlaceOnce) {
    Published<std::vector<int>> property({1});
    int announcements = 0;
    const Subscription token =
        property.subscribe([&](const std::vector<int>&) { ++announcements; }, CurrentValue::drop);
    property.change([](std::vector<int>& list) {
        list.push_back(2);
        list.push_back(3);
    });
    EXPECT_EQ(announcements, 1);
    EXPECT_EQ(property.get(), (std::vector<int>{1, 2, 3}));
}

TEST(PublishedTest, FallsSilentForATokenThatWasLetGo) {
    Published<int> property(0);
    Heard heard;
    {
        const Subscription token =
            property.subscribe([&](const int& value) { heard.push_back(value); }, CurrentValue::drop);
        property.set(1);
    }
    property.set(2);
    EXPECT_EQ(heard, Heard{1});
}

TEST(PublishedTest, LetsASubscriberEndAnotherFromInsideAnAnnouncement) {
    Published<int> property(0);
    Heard heard;
    std::optional<Subscription> second;
    const Subscription first = property.subscribe([&](const int&) { second.reset(); }, CurrentValue::drop);
    second = property.subscribe([&](const int& value) { heard.push_back(value); }, CurrentValue::drop);
    property.set(1);
    EXPECT_TRUE(heard.empty());
}

TEST(PublishedTest, LetsASubscriberEndItselfFromInsideAnAnnouncement) {
    Published<int> property(0);
    auto big = std::make_shared<std::string>(1000, 'x');  // still needed after the token is gone
    Heard heard;
    std::optional<Subscription> token;
    token = property.subscribe(
        [&, big](const int& value) {
            token.reset();
            heard.push_back(value + static_cast<int>(big->size()));
        },
        CurrentValue::drop);
    property.set(1);
    property.set(2);
    EXPECT_EQ(heard, Heard{1001});
}

TEST(PublishedTest, TellsASubscriberThatEndedItselfNothingOfWhatItSetsMeanwhile) {
    Published<int> property(0);
    Heard heard;
    std::optional<Subscription> token;
    token = property.subscribe(
        [&](const int& value) {
            heard.push_back(value);
            token.reset();
            if (value == 1) property.set(2);
        },
        CurrentValue::drop);
    property.set(1);
    EXPECT_EQ(heard, Heard{1});
}

TEST(PublishedTest, TellsANewSubscriberFromTheNextAnnouncementOn) {
    Published<int> property(0);
    Heard heard;
    std::optional<Subscription> late;
    const Subscription first = property.subscribe(
        [&](const int&) {
            if (!late) {
                late = property.subscribe([&](const int& value) { heard.push_back(value); }, CurrentValue::drop);
            }
        },
        CurrentValue::drop);
    property.set(1);
    EXPECT_TRUE(heard.empty());
    property.set(2);
    EXPECT_EQ(heard, Heard{2});
}

TEST(PublishedTest, StoresTheOuterValueLastWhenSetFromInsideAnAnnouncement) {
    Published<int> property(0);
    Heard heard;
    const Subscription token = property.subscribe(
        [&](const int& value) {
            heard.push_back(value);
            if (value == 1) property.set(5);
        },
        CurrentValue::drop);
    property.set(1);
    EXPECT_EQ(heard, (Heard{1, 5}));
    EXPECT_EQ(property.get(), 1);
}

TEST(PublishedTest, MayBeOutlivedByItsTokens) {
    Subscription token;
    {
        Published<int> property(0);
        token = property.subscribe([](const int&) {});
    }
    token = Subscription();
    SUCCEED();  // the sanitizer judges
}

}  // namespace
}  // namespace kovra
