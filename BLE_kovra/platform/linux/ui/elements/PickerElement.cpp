#include "BLE_kovra/platform/linux/ui/elements/PickerElement.h"

#include <algorithm>
#include <utility>

#include "BLE_kovra/platform/linux/ui/style/Points.h"

namespace kovra {

namespace {

constexpr double betweenButtons = 6;  // points
constexpr int widestTitle = 2;        // of the width, as a divisor

bool haveSameTags(const Picker& one, const Picker& other) {
    return std::equal(one.options.begin(), one.options.end(), other.options.begin(), other.options.end(),
                      [](const Picker::Option& a, const Picker::Option& b) { return a.tag == b.tag; });
}

}  // namespace

PickerElement::PickerElement(const Site& site)
    : Element(site), group_(std::make_unique<Group>(&site.host)), title_(std::make_unique<TextLabel>(*group_)) {
    group_->show();
}

void PickerElement::showKind(const View& view, const TextStyle& style, std::uint64_t heard) {
    const auto& picker = std::get<Picker>(view.kind);
    const bool hasOtherButtons = !haveSameTags(picker, picker_);
    picker_ = picker;
    if (hasOtherButtons) makeButtons();

    const QString title = plainText(picker.title);
    title_->show(title, style.qtFont(), style.color);
    if (title != group_->accessibleName()) group_->setAccessibleName(title);
    for (std::size_t i = 0; i < buttons_.size(); ++i) {
        const View label{Text{picker.options[i].title}, {}, {}, {}};
        buttons_[i]->show(label, site().actions, style, heard);
    }
    if (hasOtherButtons || changed_ <= heard) choose(picker.selection);
}

void PickerElement::makeButtons() {
    buttons_.clear();
    for (const Picker::Option& option : picker_.options) {
        buttons_.push_back(std::make_unique<RadioButton>(*group_, [this, tag = option.tag] { userChose(tag); }));
    }
}

void PickerElement::userChose(const std::string& tag) {
    changed_ = site().actions.changed(path(), tag);
    chooseWhereTabStops();
}

void PickerElement::choose(const std::string& tag) {
    for (std::size_t i = 0; i < buttons_.size(); ++i) {
        const bool isChosen = picker_.options[i].tag == tag;
        if (buttons_[i]->isChecked() == isChosen) continue;
        // The last one that is chosen cannot be let go of otherwise.
        buttons_[i]->setAutoExclusive(false);
        buttons_[i]->showChecked(isChosen);
        buttons_[i]->setAutoExclusive(true);
    }
    chooseWhereTabStops();
}

// At the chosen one alone; the arrow keys go from there.
void PickerElement::chooseWhereTabStops() {
    const bool isAnyChosen =
        std::any_of(buttons_.begin(), buttons_.end(), [](const auto& b) { return b->isChecked(); });
    for (const auto& button : buttons_)
        button->setFocusPolicy(button->isChecked() || !isAnyChosen ? Qt::StrongFocus : Qt::ClickFocus);
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

Wish PickerElement::kindWidth() {
    Wish widest;
    for (const auto& button : buttons_) {
        const Wish its = button->wishedWidth();
        widest = {std::max(widest.least, its.least), std::max(widest.ideal, its.ideal), false};
    }
    const int title = title_->paragraph().idealWidth() + gap();
    return {title_->paragraph().leastWidth() + gap() + widest.least, title + widest.ideal, false};
}

Wish PickerElement::kindHeight(int width) {
    const int title = std::min(title_->paragraph().idealWidth(), width / widestTitle);
    int height = buttons_.empty() ? 0 : static_cast<int>(buttons_.size() - 1) * pixels(betweenButtons);
    for (const auto& button : buttons_) height += button->wishedHeight(width - title - gap()).ideal;
    height = std::max(height, title_->paragraph().heightFor(title));
    return {height, height, false};
}

void PickerElement::placeKind(const QRect& place) {
    group_->setGeometry(place.adjusted(0, -ringSpace, ringSpace, ringSpace));
    const int title = std::min(title_->paragraph().idealWidth(), place.width() / widestTitle);
    const int width = place.width() - title - gap();
    QRect its(title + gap(), ringSpace, width, 0);
    // The title stands beside the first button.
    const int titleHeight = title_->paragraph().heightFor(title);
    const int first = buttons_.empty() ? titleHeight : buttons_.front()->wishedHeight(width).ideal;
    const int below = std::max(0, (std::min(first, titleHeight * 2) - titleHeight) / 2);
    title_->setGeometry(0, ringSpace + below, title, titleHeight);
    for (const auto& button : buttons_) {
        its.setHeight(button->wishedHeight(width).ideal);
        button->place(its);
        its.moveTop(its.top() + its.height() + pixels(betweenButtons));
    }
}

int PickerElement::gap() const { return usualGap(*group_); }

}  // namespace kovra
