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
    explicit Subscription(std::shared_ptr<void> handler) : handler_(std::move(handler)) {}

  private:
    std::shared_ptr<void> handler_;
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
        const std::vector<std::weak_ptr<Handler>> audience = subscribers_;
        for (const std::weak_ptr<Handler>& subscriber : audience) {
            if (const std::shared_ptr<Handler> handler = subscriber.lock()) (*handler)(value);
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
        auto subscriber = std::make_shared<Handler>(std::move(handler));
        std::erase_if(subscribers_, [](const std::weak_ptr<Handler>& gone) { return gone.expired(); });
        subscribers_.push_back(subscriber);
        if (current == CurrentValue::deliver) (*subscriber)(value_);
        return Subscription(std::move(subscriber));
    }

  private:
    T value_;
    std::vector<std::weak_ptr<Handler>> subscribers_;
};

}  // namespace kovra
