#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "BLE_kovra/platform/MainQueue.h"
#include "BLE_kovra/platform/StatusBar.h"
#include "BLE_kovra/platform/linux/loop/Lifetime.h"

namespace kovra {

// All that a tray shows of the item.
struct TrayContents {
    std::optional<Drawing> image;
    bool imageIsTemplate = false;
    std::string toolTip;
    Menu menu;
};

// What to show anew.
struct TrayChanges {
    bool image = false;  // the picture, or whether it is a template
    bool toolTip = false;
    bool menu = false;                // it is another menu
    std::vector<std::size_t> states;  // in the same menu: the positions of items whose check mark is to be shown

    bool any() const { return image || toolTip || menu || !states.empty(); }
};

// One way for the item to be seen and clicked. It lives inside its item.
class TrayFront {
  public:
    virtual ~TrayFront() = default;
    // From the queue: first with everything changed, then whenever something has.
    virtual void show(const TrayContents& contents, const TrayChanges& changes) = 0;
};

// The item of the tray: keeps what is shown, and has its fronts show it at most once a turn of the queue, and only what
// differs from what they showed last.
class TrayItem : public StatusItem, private StatusBarButton {
  public:
    explicit TrayItem(MainQueue& queue);

    StatusBarButton* button() override { return this; }
    void setMenu(Menu menu) override;
    void setState(int tag, MenuItemState state) override;

    // For the fronts.
    void add(std::unique_ptr<TrayFront> front);
    const TrayContents& contents() const { return contents_; }
    // As it was shown last.
    const TrayContents& shown() const { return shown_; }
    // The user's choice, by position in the menu. From the queue the item's action is performed, if it is enabled and
    // has one. Trays flip a check mark by themselves, rightly or not: when the action and what it queued have had their
    // turn, the fronts show the state again, also an unchanged one.
    void choose(std::size_t position);

  private:
    struct Place {
        std::unique_ptr<TrayFront> front;
        bool isNew = true;
    };

    void setImage(const Drawing& image) override;
    bool hasImage() const override { return contents_.image.has_value(); }
    void setImageIsTemplate(bool isTemplate) override;
    void setToolTip(const std::string& text) override;

    void perform(std::size_t position);
    void showSoon();
    void show();
    TrayChanges changes() const;

    MainQueue& queue_;
    TrayContents contents_;
    TrayContents shown_;
    std::vector<std::size_t> toRepeat_;  // positions whose state is to be shown again
    bool isShownSoon_ = false;
    std::vector<Place> places_;
    Lifetime lifetime_;
};

}  // namespace kovra
