#include "BLE_kovra/core/Published.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace kovra {
namespace {

using Values = std::vector<int>;

class PublishedTest : public testing::Test {
  protected:
    // Appends each announced value to `received`.
    [[nodiscard]] Subscription record() {
        return subscribe([this](int value) { received.push_back(value); });
    }
    [[nodiscard]] Subscription subscribe(Published<int>::Handler handler) {
        return property.subscribe(std::move(handler), CurrentValue::drop);
    }

    Published<int> property{0};
    Values received;
};

TEST_F(PublishedTest, AnnouncesTheNewValueBeforeItIsStored) {
    int announced = 0, stored = -1;
    const Subscription token = subscribe([&](int value) {
        announced = value;
        stored = property.get();
    });
    property.set(2);
    EXPECT_EQ(announced, 2);
    EXPECT_EQ(stored, 0);
    EXPECT_EQ(property.get(), 2);
}

struct Delivery {
    const char* name;
    CurrentValue current;
    Values set;
    Values received;
};
void PrintTo(const Delivery& delivery, std::ostream* out) { *out << delivery.name; }

class PublishedDeliveryTest : public testing::TestWithParam<Delivery> {};

TEST_P(PublishedDeliveryTest, DeliversToASubscriberOfAPropertyThatHolds7) {
    Published<int> property(7);
    Values received;
    const Subscription token = property.subscribe([&](int value) { received.push_back(value); }, GetParam().current);
    for (const int value : GetParam().set) property.set(value);
    EXPECT_EQ(received, GetParam().received);
}

INSTANTIATE_TEST_SUITE_P(, PublishedDeliveryTest,
                         testing::Values(Delivery{"TheCurrentValue", CurrentValue::deliver, {}, {7}},
                                         Delivery{"OnlyLaterValuesOnRequest", CurrentValue::drop, {8}, {8}},
                                         Delivery{"AnEqualValue", CurrentValue::drop, {7}, {7}}),
                         [](const auto& row) { return row.param.name; });

TEST_F(PublishedTest, DeliversTheCurrentValueByDefault) {
    property.set(7);
    const Subscription token = property.subscribe([this](int value) { received.push_back(value); });
    EXPECT_EQ(received, Values{7});
}

TEST_F(PublishedTest, NotifiesSubscribersInTheOrderOfSubscription) {
    std::string order;
    const Subscription first = subscribe([&](int) { order += 'a'; });
    const Subscription second = subscribe([&](int) { order += 'b'; });
    property.set(1);
    EXPECT_EQ(order, "ab");
}

TEST_F(PublishedTest, AnnouncesAnEditInPlaceOnce) {
    Published<Values> list({1});
    int announcements = 0;
    const Subscription token = list.subscribe([&](const Values&) { ++announcements; }, CurrentValue::drop);
    list.change([](Values& values) {
        values.push_back(2);
        values.push_back(3);
    });
    EXPECT_EQ(announcements, 1);
    EXPECT_EQ(list.get(), (Values{1, 2, 3}));
}

TEST_F(PublishedTest, EndsASubscriptionWithItsToken) {
    {
        const Subscription token = record();
        property.set(1);
    }
    property.set(2);
    EXPECT_EQ(received, Values{1});
}

TEST_F(PublishedTest, LetsASubscriberEndAnotherDuringAnAnnouncement) {
    std::optional<Subscription> second;
    const Subscription first = subscribe([&](int) { second.reset(); });
    second = record();
    property.set(1);
    EXPECT_EQ(received, Values{});
}

TEST_F(PublishedTest, LetsASubscriberEndItselfDuringAnAnnouncement) {
    auto big = std::make_shared<std::string>(1000, 'x');  // used even after the token has been destroyed
    std::optional<Subscription> token;
    token = subscribe([&, big](int value) {
        token.reset();
        received.push_back(value + static_cast<int>(big->size()));
    });
    property.set(1);
    property.set(2);
    EXPECT_EQ(received, Values{1001});
}

TEST_F(PublishedTest, SkipsASubscriberThatEndedItselfInANestedAnnouncement) {
    std::optional<Subscription> token;
    token = subscribe([&](int value) {
        received.push_back(value);
        token.reset();
        if (value == 1) property.set(2);
    });
    property.set(1);
    EXPECT_EQ(received, Values{1});
}

TEST_F(PublishedTest, NotifiesANewSubscriberFromTheNextAnnouncementOn) {
    std::optional<Subscription> late;
    const Subscription first = subscribe([&](int) {
        if (!late) late = record();
    });
    property.set(1);
    EXPECT_EQ(received, Values{});
    property.set(2);
    EXPECT_EQ(received, Values{2});
}

TEST_F(PublishedTest, StoresTheOuterValueLastWhenASubscriberSetsAnother) {
    const Subscription token = subscribe([&](int value) {
        received.push_back(value);
        if (value == 1) property.set(5);
    });
    property.set(1);
    EXPECT_EQ(received, (Values{1, 5}));
    EXPECT_EQ(property.get(), 1);
}

TEST_F(PublishedTest, MayBeDestroyedBeforeItsTokens) {
    Subscription token;
    {
        Published<int> shortLived(0);
        token = shortLived.subscribe([](int) {});
    }
    token = Subscription();
    SUCCEED();  // the sanitizer detects errors
}

}  // namespace
}  // namespace kovra
