#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "BLE_kovra/platform/Window.h"

namespace kovra {

// A screen for one window. `calls` records all calls except setContent() in order; `shown` is the newest content.
class FakeWindows : public WindowHost {
  public:
    std::unique_ptr<Window> makeWindow(View content) override {
        calls.emplace_back("make");
        shown = std::move(content);
        return std::make_unique<Made>(*this);
    }

    // Lets the user see a window that was brought to the front since the last call.
    void draw() {
        if (std::exchange(isToBeDrawn_, false) && isVisible && onShown_) onShown_();
    }
    // Closes the window, like the close button of its frame.
    void close() { isVisible = false; }

    std::vector<std::string> calls;
    std::string title;
    View shown;
    int contents = 0;  // the number of calls to setContent()
    bool isVisible = false;

  private:
    class Made : public Window {
      public:
        explicit Made(FakeWindows& host) : host_(host) {}
        ~Made() override {
            host_.isVisible = false;
            host_.onShown_ = nullptr;
        }
        void setTitle(const std::string& given) override {
            record("title " + given);
            host_.title = given;
        }
        void setStyleMask(unsigned mask) override { record("style mask " + std::to_string(mask)); }
        void setContentSize(Size size) override {
            record("content size " + std::to_string(static_cast<int>(size.width)) + "x" +
                   std::to_string(static_cast<int>(size.height)));
        }
        void setReleasedWhenClosed(bool isReleased) override {
            record(isReleased ? "released when closed" : "kept when closed");
        }
        void setOnShown(std::function<void()> onShown) override { host_.onShown_ = std::move(onShown); }
        void center() override { record("center"); }
        void makeKeyAndOrderFront() override {
            record("front");
            host_.isVisible = true;
            host_.isToBeDrawn_ = true;
        }
        bool isVisible() const override { return host_.isVisible; }
        void setContent(View content) override {
            host_.shown = std::move(content);
            ++host_.contents;
        }

      private:
        void record(std::string call) { host_.calls.push_back(std::move(call)); }

        FakeWindows& host_;
    };

    std::function<void()> onShown_;
    bool isToBeDrawn_ = false;
};

}  // namespace kovra
