#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "BLE_kovra/platform/MainQueue.h"
#include "BLE_kovra/platform/StatusBar.h"
#include "BLE_kovra/platform/linux/loop/Lifetime.h"

namespace kovra {

// Everything that a tray shows for the status item.
struct TrayContents {
    std::optional<Drawing> image;
    bool imageIsTemplate = false;
    std::string toolTip;
    Menu menu;
};

// The parts of the contents that must be shown again.
struct TrayChanges {
    bool image = false;  // the image, or whether it is a template
    bool toolTip = false;
    bool menu = false;                // the menu was replaced
    std::vector<std::size_t> states;  // in an unchanged menu: positions of the items whose check mark must be shown

    bool any() const { return image || toolTip || menu || !states.empty(); }
};

// One way to show the status item and to receive clicks. The item owns its fronts.
class TrayFront {
  public:
    virtual ~TrayFront() = default;
    // Called first when the item gets its menu, with every part marked as changed, then from the queue after changes.
    virtual void show(const TrayContents& contents, const TrayChanges& changes) = 0;
};

// The status item in the tray. It keeps the contents and passes them to its fronts, at most once per turn of the queue.
// Each time it also passes the parts that differ from the contents that the fronts showed last. The first time it does
// not wait for the queue: the application sets the menu last, and starts for some milliseconds more before the queue
// runs. Meanwhile the panel can already create the icon.
class TrayItem : public StatusItem, private StatusBarButton {
  public:
    // `announce` shows a text to the user if no tray shows the icon. It may be empty.
    using Announce = std::function<void(const std::string& text)>;
    explicit TrayItem(MainQueue& queue, Announce announce = {});

    StatusBarButton* button() override { return this; }
    void setMenu(Menu menu) override;
    void setState(int tag, MenuItemState state) override;
    void announce(const std::string& text) override {
        if (announce_) announce_(text);
    }

    // The remaining functions are for the fronts.
    void add(std::unique_ptr<TrayFront> front);
    const TrayContents& contents() const { return contents_; }
    // The contents that the fronts showed last.
    const TrayContents& shown() const { return shown_; }
    // Call this function when the user has chosen the menu item at this position. Its action runs from the queue, if
    // the menu item is enabled and has an action. Some trays toggle a check mark by themselves. So the fronts show the
    // state again after the action and the blocks that it queued have run, even if the state is unchanged.
    void choose(std::size_t position);

  private:
    struct FrontEntry {
        std::unique_ptr<TrayFront> front;
        bool isNew = true;
    };

    void setImage(const Drawing& image) override;
    bool hasImage() const override { return contents_.image.has_value(); }
    void setImageIsTemplate(bool isTemplate) override;
    void setToolTip(const std::string& text) override;

    void perform(std::size_t position);
    void scheduleShow();
    void show();
    TrayChanges changes() const;

    MainQueue& queue_;
    const Announce announce_;
    TrayContents contents_;
    TrayContents shown_;
    std::vector<std::size_t> repeatedStates_;  // positions whose state must be shown again
    bool isShowScheduled_ = false;
    std::vector<FrontEntry> fronts_;
    Lifetime lifetime_;
};

}  // namespace kovra
