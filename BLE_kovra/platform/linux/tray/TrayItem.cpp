#include "BLE_kovra/platform/linux/tray/TrayItem.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace kovra {

namespace {

// Returns whether two items look the same, apart from the state of the check mark.
bool lookAlike(const MenuItem& one, const MenuItem& other) {
    return one.title == other.title && one.keyEquivalent == other.keyEquivalent &&
           one.state.has_value() == other.state.has_value() && one.isEnabled == other.isEnabled &&
           one.isSeparator == other.isSeparator;
}

bool lookAlike(const Menu& one, const Menu& other) {
    return std::equal(one.items.begin(), one.items.end(), other.items.begin(), other.items.end(),
                      [](const MenuItem& a, const MenuItem& b) { return lookAlike(a, b); });
}

}  // namespace

TrayItem::TrayItem(MainQueue& queue, Announce announce) : queue_(queue), announce_(std::move(announce)) {}

void TrayItem::setMenu(Menu menu) {
    const bool isFirst = contents_.menu.items.empty();
    contents_.menu = std::move(menu);
    if (isFirst)
        show();
    else
        scheduleShow();
}

void TrayItem::setState(int tag, MenuItemState state) {
    MenuItem* item = contents_.menu.itemWithTag(tag);
    if (item == nullptr || item->state == state) return;
    item->state = state;
    scheduleShow();
}

void TrayItem::setImage(const Drawing& image) {
    contents_.image = image;
    contents_.imageIsTemplate = false;
    scheduleShow();
}

void TrayItem::setImageIsTemplate(bool isTemplate) {
    contents_.imageIsTemplate = isTemplate;
    scheduleShow();
}

void TrayItem::setToolTip(const std::string& text) {
    contents_.toolTip = text;
    scheduleShow();
}

void TrayItem::add(std::unique_ptr<TrayFront> front) {
    fronts_.push_back({std::move(front)});
    scheduleShow();
}

void TrayItem::choose(std::size_t position) {
    queue_.async(lifetime_.guard([this, position] { perform(position); }));
}

void TrayItem::perform(std::size_t position) {
    if (position >= contents_.menu.items.size()) return;
    const MenuItem& item = contents_.menu.items[position];
    const bool hasState = item.state.has_value();
    const Lifetime::Observer self = lifetime_.observe();
    if (item.isEnabled && item.action) {
        const auto action = item.action->perform;
        action();  // may replace the menu or destroy this object
    }
    if (!hasState || self.hasEnded()) return;
    queue_.async(lifetime_.guard([this, position] {
        repeatedStates_.push_back(position);
        scheduleShow();
    }));
}

void TrayItem::scheduleShow() {
    if (!std::exchange(isShowScheduled_, true)) queue_.async(lifetime_.guard([this] { show(); }));
}

void TrayItem::show() {
    isShowScheduled_ = false;
    const TrayChanges changed = changes();
    repeatedStates_.clear();
    shown_ = contents_;
    for (FrontEntry& entry : fronts_) {
        if (std::exchange(entry.isNew, false)) {
            entry.front->show(contents_, {.image = true, .toolTip = true, .menu = true, .states = {}});
        } else if (changed.any()) {
            entry.front->show(contents_, changed);
        }
    }
}

TrayChanges TrayItem::changes() const {
    TrayChanges changes;
    changes.image = contents_.image != shown_.image || contents_.imageIsTemplate != shown_.imageIsTemplate;
    changes.toolTip = contents_.toolTip != shown_.toolTip;
    changes.menu = !lookAlike(contents_.menu, shown_.menu);
    if (changes.menu) return changes;
    const auto& items = contents_.menu.items;
    for (std::size_t position = 0; position < items.size(); ++position) {
        const bool isRepeated =
            std::find(repeatedStates_.begin(), repeatedStates_.end(), position) != repeatedStates_.end();
        if (!items[position].state) continue;
        if (isRepeated || items[position].state != shown_.menu.items[position].state)
            changes.states.push_back(position);
    }
    return changes;
}

}  // namespace kovra
