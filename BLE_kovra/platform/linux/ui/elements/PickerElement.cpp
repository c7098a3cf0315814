#include "BLE_kovra/platform/linux/ui/elements/PickerElement.h"

#include <algorithm>
#include <utility>

#include "BLE_kovra/platform/linux/ui/style/Points.h"

namespace kovra {

namespace {

constexpr double buttonSpacing = 6;  // points
constexpr int titleDivisor = 2;      // the title takes at most half of the width

bool haveSameTags(const Picker& one, const Picker& other) {
    return std::equal(one.options.begin(), one.options.end(), other.options.begin(), other.options.end(),
                      [](const Picker::Option& a, const Picker::Option& b) { return a.tag == b.tag; });
}

}  // namespace

PickerElement::PickerElement(const Site& site)
    : Element(site), group_(std::make_unique<Group>(&site.host)), title_(std::make_unique<TextLabel>(*group_)) {
    group_->show();
}

void PickerElement::showContentOf(const View& view, const TextStyle& style, std::uint64_t acknowledged) {
    const auto& picker = std::get<Picker>(view.kind);
    const bool areButtonsNew = !haveSameTags(picker, picker_);
    picker_ = picker;
    if (areButtonsNew) makeButtons();

    const QString title = plainText(picker.title);
    title_->show(title, style.qtFont(), style.color);
    if (title != group_->accessibleName()) group_->setAccessibleName(title);
    for (std::size_t i = 0; i < buttons_.size(); ++i) {
        const View label{Text{picker.options[i].title}, {}, {}, {}};
        buttons_[i]->show(label, site().actions, style, acknowledged);
    }
    if (areButtonsNew || lastChange_ <= acknowledged) select(picker.selection);
}

void PickerElement::makeButtons() {
    buttons_.clear();
    for (const Picker::Option& option : picker_.options) {
        buttons_.push_back(std::make_unique<RadioButton>(*group_, [this, tag = option.tag] { userChose(tag); }));
    }
}

void PickerElement::userChose(const std::string& tag) {
    lastChange_ = site().actions.changed(path(), tag);
    updateFocusPolicies();
}

void PickerElement::select(const std::string& tag) {
    for (std::size_t i = 0; i < buttons_.size(); ++i) {
        const bool isSelected = picker_.options[i].tag == tag;
        if (buttons_[i]->isChecked() == isSelected) continue;
        // A checked button cannot be unchecked while it is exclusive.
        buttons_[i]->setAutoExclusive(false);
        buttons_[i]->showChecked(isSelected);
        buttons_[i]->setAutoExclusive(true);
    }
    updateFocusPolicies();
}

// Makes Tab stop only at the selected button, from which the arrow keys move on. If none is selected, Tab stops at
// each.
void PickerElement::updateFocusPolicies() {
    const bool isAnySelected =
        std::any_of(buttons_.begin(), buttons_.end(), [](const auto& b) { return b->isChecked(); });
    for (const auto& button : buttons_)
        button->setFocusPolicy(button->isChecked() || !isAnySelected ? Qt::StrongFocus : Qt::ClickFocus);
}

void PickerElement::addTexts(QStringList& texts) const {
    texts.append(title_->text());
    for (const auto& button : buttons_) texts.append(button->accessibleName());
}

void PickerElement::addWidgets(std::vector<QWidget*>& widgets) const {
    widgets.push_back(group_.get());
    widgets.push_back(title_.get());
    for (const auto& button : buttons_) widgets.push_back(button.get());
}

SizeHint PickerElement::contentWidth() {
    SizeHint widest;
    for (const auto& button : buttons_) {
        const SizeHint hint = button->widthHint();
        widest = {std::max(widest.minimum, hint.minimum), std::max(widest.preferred, hint.preferred), false};
    }
    const int title = title_->paragraph().preferredWidth() + gap();
    return {title_->paragraph().minimumWidth() + gap() + widest.minimum, title + widest.preferred, false};
}

SizeHint PickerElement::contentHeight(int width) {
    const int title = std::min(title_->paragraph().preferredWidth(), width / titleDivisor);
    int height = buttons_.empty() ? 0 : static_cast<int>(buttons_.size() - 1) * pixels(buttonSpacing);
    for (const auto& button : buttons_) height += button->heightHint(width - title - gap()).preferred;
    height = std::max(height, title_->paragraph().heightForWidth(title));
    return {height, height, false};
}

void PickerElement::placeContent(const QRect& rect) {
    group_->setGeometry(rect.adjusted(0, -focusRingMargin, focusRingMargin, focusRingMargin));
    const int title = std::min(title_->paragraph().preferredWidth(), rect.width() / titleDivisor);
    const int width = rect.width() - title - gap();
    QRect button(title + gap(), focusRingMargin, width, 0);
    // Center the title beside the first button, but lower it by at most half of its own height.
    const int titleHeight = title_->paragraph().heightForWidth(title);
    const int first = buttons_.empty() ? titleHeight : buttons_.front()->heightHint(width).preferred;
    const int below = std::max(0, (std::min(first, titleHeight * 2) - titleHeight) / 2);
    title_->setGeometry(0, focusRingMargin + below, title, titleHeight);
    for (const auto& each : buttons_) {
        button.setHeight(each->heightHint(width).preferred);
        each->place(button);
        button.moveTop(button.top() + button.height() + pixels(buttonSpacing));
    }
}

int PickerElement::gap() const { return defaultSpacing(*group_); }

}  // namespace kovra
