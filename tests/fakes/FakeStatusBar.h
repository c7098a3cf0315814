#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "BLE_kovra/platform/MainQueue.h"
#include "BLE_kovra/platform/StatusBar.h"

namespace kovra {

// A bar with one status item, for tests to inspect and click. `calls` records what changes the image or the menu.
class FakeStatusBar : public StatusBar {
  public:
    explicit FakeStatusBar(MainQueue& queue) : queue_(queue) {}

    std::unique_ptr<StatusItem> statusItem(double length) override {
        lengths.push_back(length);
        if (!givesItems) return nullptr;
        return std::make_unique<Item>(*this);
    }

    // Chooses the item at this position. Positions start at 0 and include the separator. Like a click, the choice is
    // handled from the queue, and only an enabled item performs its action.
    void choose(std::size_t position) {
        queue_.async([this, position] {
            if (!menu || position >= menu->items.size()) return;
            const MenuItem item = menu->items[position];
            if (item.isEnabled && item.action) item.action->perform();
        });
    }

    std::optional<MenuItemState> stateOf(int tag) {
        const MenuItem* item = menu ? menu->itemWithTag(tag) : nullptr;
        return item == nullptr ? std::nullopt : item->state;
    }
    std::string advice() const override { return adviceKey; }
    bool hasSlash() const { return image && image->strokes.size() == 3; }

    // What this desktop can do.
    bool givesItems = true;
    bool hasButton = true;
    bool makesImages = true;
    bool keepsMenus = true;
    std::string adviceKey;  // empty if the user needs no advice

    // What the item shows, and the lengths that were requested for it.
    int items = 0;  // the number of items in the bar
    std::vector<double> lengths;
    std::optional<Drawing> image;
    bool imageIsTemplate = false;
    std::string toolTip;
    std::optional<Menu> menu;
    std::vector<std::string> calls;
    std::vector<std::string> announced;

  private:
    class Item : public StatusItem, public StatusBarButton {
      public:
        explicit Item(FakeStatusBar& bar) : bar_(bar) { ++bar_.items; }
        Item(const Item&) = delete;
        Item& operator=(const Item&) = delete;
        ~Item() override { --bar_.items; }

        StatusBarButton* button() override { return bar_.hasButton ? this : nullptr; }
        void setMenu(Menu given) override {
            bar_.calls.emplace_back("menu");
            if (bar_.keepsMenus) bar_.menu = std::move(given);
        }
        void setState(int tag, MenuItemState state) override {
            bar_.calls.push_back("tag " + std::to_string(tag) + (state == MenuItemState::on ? " on" : " off"));
            if (MenuItem* item = bar_.menu ? bar_.menu->itemWithTag(tag) : nullptr) item->state = state;
        }
        void announce(const std::string& text) override { bar_.announced.push_back(text); }
        void setImage(const Drawing& given) override {
            bar_.calls.emplace_back(given.strokes.size() == 3 ? "slashed image" : "plain image");
            bar_.imageIsTemplate = false;
            if (bar_.makesImages) bar_.image = given;
        }
        bool hasImage() const override { return bar_.image.has_value(); }
        void setImageIsTemplate(bool isTemplate) override {
            bar_.calls.emplace_back(isTemplate ? "template" : "no template");
            bar_.imageIsTemplate = isTemplate;
        }
        void setToolTip(const std::string& text) override { bar_.toolTip = text; }

      private:
        FakeStatusBar& bar_;
    };

    MainQueue& queue_;
};

}  // namespace kovra
