#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace kovra {

// The owner of one subscription. Its destructor ends the subscription, even during an announcement. It may outlive the
// property.
class [[nodiscard]] Subscription {
  public:
    Subscription() = default;
    // Destroying `token` ends the subscription.
    explicit Subscription(std::shared_ptr<void> token) : token_(std::move(token)) {}

  private:
    std::shared_ptr<void> token_;
};

// Whether a new subscriber receives the current value at once.
enum class CurrentValue { deliver, drop };

// A property that announces each new value before it stores the value.
//
// set() passes the new value to each subscriber in the order of subscription, and then stores it. During the
// announcement get() still returns the old value. A subscriber that needs the new value queues a block, which reads it
// later. set() announces a value even if it equals the old one. If a handler calls set(), that nested call announces
// and stores its value at once. The outer call stores its own value afterwards. A subscriber added during an
// announcement is notified from the next announcement on.
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

    // Edits a copy of the value and sets it, with a single announcement.
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
        // The token owns the subscriber. set() holds the subscriber while it calls the handler. So a handler may end
        // its own subscription: the call completes, and the handler is not called again.
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
