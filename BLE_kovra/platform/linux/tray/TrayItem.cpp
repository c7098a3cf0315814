#include "BLE_kovra/platform/linux/tray/TrayItem.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace kovra {

namespace {

// Whether two items look alike but for the check mark itself.
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

TrayItem::TrayItem(MainQueue& queue) : queue_(queue), self_(std::make_shared<TrayItem*>(this)) {}

TrayItem::~TrayItem() { self_.reset(); }

void TrayItem::setMenu(Menu menu) {
    contents_.menu = std::move(menu);
    tellSoon();
}

void TrayItem::setState(int tag, MenuItemState state) {
    MenuItem* item = contents_.menu.itemWithTag(tag);
    if (item == nullptr || item->state == state) return;
    item->state = state;
    tellSoon();
}

void TrayItem::setImage(const Drawing& image) {
    contents_.image = image;
    contents_.imageIsTemplate = false;
    tellSoon();
}

void TrayItem::setImageIsTemplate(bool isTemplate) {
    contents_.imageIsTemplate = isTemplate;
    tellSoon();
}

void TrayItem::setToolTip(const std::string& text) {
    contents_.toolTip = text;
    tellSoon();
}

void TrayItem::add(std::unique_ptr<TrayFront> front) {
    places_.push_back({std::move(front)});
    tellSoon();
}

void TrayItem::choose(std::size_t position) {
    queue_.async([weak = std::weak_ptr(self_), position] {
        TrayItem* item = nullptr;
        if (const auto self = weak.lock()) item = *self;
        if (item != nullptr) item->perform(position);
    });
}

void TrayItem::perform(std::size_t position) {
    if (position >= contents_.menu.items.size()) return;
    const MenuItem& item = contents_.menu.items[position];
    const bool hasState = item.state.has_value();
    const std::weak_ptr alive = self_;
    if (item.isEnabled && item.action) {
        const auto action = item.action->perform;
        action();  // which may change the menu, or end the item
    }
    if (!hasState || alive.expired()) return;
    queue_.async([weak = alive, position] {
        const auto self = weak.lock();
        if (!self) return;
        (*self)->toRepeat_.push_back(position);
        (*self)->tellSoon();
    });
}

void TrayItem::tellSoon() {
    if (std::exchange(isTellingSoon_, true)) return;
    queue_.async([weak = std::weak_ptr(self_)] {
        if (const auto self = weak.lock()) (*self)->tell();
    });
}

void TrayItem::tell() {
    isTellingSoon_ = false;
    const TrayChanges changed = changes();
    toRepeat_.clear();
    told_ = contents_;
    for (Place& place : places_) {
        if (std::exchange(place.isNew, false)) {
            place.front->show(contents_, {.image = true, .toolTip = true, .menu = true, .states = {}});
        } else if (changed.any()) {
            place.front->show(contents_, changed);
        }
    }
}

TrayChanges TrayItem::changes() const {
    TrayChanges changes;
    changes.image = contents_.image != told_.image || contents_.imageIsTemplate != told_.imageIsTemplate;
    changes.toolTip = contents_.toolTip != told_.toolTip;
    changes.menu = !lookAlike(contents_.menu, told_.menu);
    if (changes.menu) return changes;
    const auto& items = contents_.menu.items;
    for (std::size_t position = 0; position < items.size(); ++position) {
        const bool isRepeated = std::find(toRepeat_.begin(), toRepeat_.end(), position) != toRepeat_.end();
        if (!items[position].state) continue;
        if (isRepeated || items[position].state != told_.menu.items[position].state) changes.states.push_back(position);
    }
    return changes;
}

}  // namespace kovra
