#pragma once

#include <QAbstractButton>
#include <QCheckBox>
#include <QFocusEvent>
#include <QPainter>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QStyleOptionButton>
#include <algorithm>
#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

#include "BLE_kovra/platform/linux/ui/elements/Element.h"
#include "BLE_kovra/platform/linux/ui/style/Points.h"

namespace kovra {

// Above, below and to the right of a button there is this much room for the ring that shows that it has the focus; so
// the ring does not touch the texts. In pixels; less than half of what is between two rows.
constexpr int ringSpace = 2;

// If the keyboard brings the focus to a widget that is scrolled out of sight, scrolls it into sight.
void scrollIntoSight(QWidget& widget, Qt::FocusReason reason);

// A check box or a radio button whose label is any view, which the button paints itself. All of it can be clicked. To
// screen readers its name is the texts of the label.
template <typename Button>
class LabelledButton : public Button {
  public:
    // Calls `onUse` when the user clicked or switched it, or pressed its key.
    LabelledButton(QWidget& parent, const std::function<void()>& onUse) : Button(&parent) {
        QObject::connect(this, &Button::clicked, this, onUse);
        // Screen readers switch it without a click.
        QObject::connect(this, &Button::toggled, this, [this, onUse](bool isOn) {
            if (!isClicked_ && (isOn || isCheckBox)) onUse();
        });
    }

    // Which is not the user's doing.
    void showChecked(bool isChecked) {
        const QSignalBlocker silent(this);
        this->setChecked(isChecked);
    }

    void show(const View& label, UserActions& actions, const TextStyle& style, std::uint64_t heard) {
        if (label_ && label_->isFor(label))
            label_->show(label, style, heard);
        else
            label_ = makeElement(label, Site{*this, actions, true}, style, heard);
        QStringList texts;
        label_->addTexts(texts);
        const QString name = texts.join(QLatin1String(", "));
        if (name != this->accessibleName()) this->setAccessibleName(name);
        QWidget::show();
    }

    Wish wishedWidth() {
        const Wish label = label_->width();
        const int left = labelLeft();
        return {label.least + left, label.ideal + left, label.takesRest};
    }
    Wish wishedHeight(int width) {
        const int height = std::max(label_->height(std::max(0, width - labelLeft())).ideal, indicatorHeight());
        return {height, height, false};
    }
    void place(const QRect& place) {
        this->setGeometry(place.adjusted(0, -ringSpace, ringSpace, ringSpace));
        const int left = labelLeft();
        const int height = label_->height(place.width() - left).ideal;
        label_->place({left, ringSpace + (place.height() - height) / 2, place.width() - left, height});
    }

  protected:
    bool hitButton(const QPoint& at) const override { return this->rect().contains(at); }

    void nextCheckState() override {
        isClicked_ = true;
        Button::nextCheckState();
        isClicked_ = false;
    }

    // The name makes room for the label where the style or a screen reader asks how large the button is.
    void initStyleOption(QStyleOptionButton* option) const override {
        Button::initStyleOption(option);
        option->text = this->accessibleName();
    }

    void focusInEvent(QFocusEvent* event) override {
        Button::focusInEvent(event);
        scrollIntoSight(*this, event->reason());
    }

    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        QStyleOptionButton option;
        this->initStyleOption(&option);
        option.text.clear();
        option.palette.setColor(QPalette::Window, outlineSource(option.palette));
        const bool hasFocus = option.state.testFlag(QStyle::State_HasFocus);
        option.state.setFlag(QStyle::State_HasFocus, false);
        this->style()->drawControl(isCheckBox ? QStyle::CE_CheckBox : QStyle::CE_RadioButton, &option, &painter, this);
        label_->paint(painter);
        if (!hasFocus) return;
        QStyleOptionFocusRect ring;
        ring.initFrom(this);
        ring.rect = this->rect().adjusted(labelLeft() - ringGap, 0, 0, 0);
        ring.backgroundColor = this->palette().color(QPalette::Window);
        this->style()->drawPrimitive(QStyle::PE_FrameFocusRect, &ring, &painter, this);
    }

  private:
    static constexpr bool isCheckBox = std::is_same_v<Button, QCheckBox>;
    static constexpr int ringGap = 3;  // between the label and what shows that it has the focus

    int metric(QStyle::PixelMetric ofCheckBox, QStyle::PixelMetric ofRadioButton) const {
        return this->style()->pixelMetric(isCheckBox ? ofCheckBox : ofRadioButton, nullptr, this);
    }
    int labelLeft() const {
        const int gap = metric(QStyle::PM_CheckBoxLabelSpacing, QStyle::PM_RadioButtonLabelSpacing);
        return metric(QStyle::PM_IndicatorWidth, QStyle::PM_ExclusiveIndicatorWidth) + std::max(gap, usualGap(*this));
    }
    int indicatorHeight() const { return metric(QStyle::PM_IndicatorHeight, QStyle::PM_ExclusiveIndicatorHeight); }

    std::unique_ptr<Element> label_;
    bool isClicked_ = false;
};

}  // namespace kovra
