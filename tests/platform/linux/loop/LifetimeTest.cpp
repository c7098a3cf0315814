#include "BLE_kovra/platform/linux/loop/Lifetime.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <vector>

namespace kovra {
namespace {

struct Owner {
    explicit Owner(int& calls) : calls_(calls) {}
    std::function<void()> block() {
        return lifetime_.guard([this] { ++calls_; });
    }
    // Returns a block that destroys its owner. It then stores in `hasEnded` whether the owner's lifetime has ended.
    static std::function<void()> selfDestruction(std::unique_ptr<Owner>& owner, bool& hasEnded) {
        return owner->lifetime_.guard([&] {
            const Lifetime::Observer observer = owner->lifetime_.observe();
            EXPECT_FALSE(observer.hasEnded());
            owner.reset();
            hasEnded = observer.hasEnded();
        });
    }

    int& calls_;
    Lifetime lifetime_;
};

TEST(LifetimeTest, RunsABlockWhileItsOwnerLives) {
    int calls = 0;
    Owner owner(calls);
    const auto block = owner.block();
    block();
    block();
    EXPECT_EQ(calls, 2);
}

TEST(LifetimeTest, RunsNoBlockAfterItsOwnerIsDestroyed) {
    int calls = 0;
    auto owner = std::make_unique<Owner>(calls);
    const std::vector<std::function<void()>> blocks{owner->block(), owner->block()};
    owner.reset();
    for (const auto& block : blocks) block();
    EXPECT_EQ(calls, 0);
}

TEST(LifetimeTest, EndsForOneOwnerOnly) {
    int calls = 0;
    Owner stays(calls);
    auto goes = std::make_unique<Owner>(calls);
    const auto block = stays.block();
    goes.reset();
    block();
    EXPECT_EQ(calls, 1);
}

TEST(LifetimeTest, HasEndedInsideABlockThatDestroysTheOwner) {
    int calls = 0;
    auto owner = std::make_unique<Owner>(calls);
    bool hasEnded = false;
    const auto block = Owner::selfDestruction(owner, hasEnded);
    block();
    EXPECT_TRUE(hasEnded);
    hasEnded = false;
    block();
    EXPECT_FALSE(hasEnded) << "ran again";
}

}  // namespace
}  // namespace kovra
