#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace kovra {

// Keeps one subscription alive; letting go of it ends the subscription, also from inside an announcement. It may
// outlive the property.
class [[nodiscard]] Subscription {
  public:
    Subscription() = default;
    // Letting go of `token` ends the subscription.
    explicit Subscription(std::shared_ptr<void> token) : token_(std::move(token)) {}

  private:
    std::shared_ptr<void> token_;
};

// Whether a new subscriber is given the value that the property holds already.
enum class CurrentValue { deliver, drop };

// A property that announces each change before it takes effect.
//
// set() hands the coming value to every subscriber, in the order in which they subscribed, and stores it only then:
// inside an announcement the property still reads old, and whoever needs the new value queues. Every set() announces,
// also one that stores an equal value. A set() from inside an announcement is announced and stored at once; the outer
// value is stored after it and stays. Who subscribes inside an announcement hears from the next one on.
template <typename T>
class Published {
  public:
    using Handler = std::function<void(const T&)>;

    explicit Published(T initial) : value_(std::move(initial)) {}
    Published(const Published&) = delete;
    Published& operator=(const Published&) = delete;

    const T& get() const { return value_; }

    void set(T value) {
        const std::vector<std::weak_ptr<Subscriber>> audience = subscribers_;
        for (const std::weak_ptr<Subscriber>& member : audience) {
            const std::shared_ptr<Subscriber> subscriber = member.lock();
            if (subscriber && subscriber->listens) subscriber->handler(value);
        }
        value_ = std::move(value);
    }

    // Edits a copy in place and sets it: one announcement, however much is edited.
    template <typename Edit>
    void change(Edit edit) {
        T edited = value_;
        edit(edited);
        set(std::move(edited));
    }

    Subscription subscribe(Handler handler, CurrentValue current = CurrentValue::deliver) {
        auto subscriber = std::make_shared<Subscriber>(Subscriber{std::move(handler)});
        std::erase_if(subscribers_, [](const std::weak_ptr<Subscriber>& gone) { return gone.expired(); });
        subscribers_.push_back(subscriber);
        if (current == CurrentValue::deliver) subscriber->handler(value_);
        // A running handler may end its own subscription; it is kept alive until it returns, and not called again.
        return Subscription(std::shared_ptr<void>(nullptr, [subscriber](void*) { subscriber->listens = false; }));
    }

  private:
    struct Subscriber {
        Handler handler;
        bool listens = true;
    };

    T value_;
    std::vector<std::weak_ptr<Subscriber>> subscribers_;
};

}  // namespace kovra
