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

// Pixels above, below and to the right of a button, so that its focus ring does not touch the texts. The margin is less
// than half of the spacing between two rows, so that the rings of two rows do not overlap.
constexpr int focusRingMargin = 2;

// Scrolls the widget into view if it received the focus by the Tab key.
void scrollIntoView(QWidget& widget, Qt::FocusReason reason);

// A check box or a radio button whose label is a view. The button paints the label itself, and all of its area can be
// clicked. Its accessible name consists of the texts of the label.
template <typename Button>
class LabelledButton : public Button {
  public:
    // Calls `onUse` when the user clicks the button or switches it with the keyboard or a screen reader.
    LabelledButton(QWidget& parent, const std::function<void()>& onUse) : Button(&parent) {
        QObject::connect(this, &Button::clicked, this, onUse);
        // A screen reader switches the button without a click.
        QObject::connect(this, &Button::toggled, this, [this, onUse](bool isOn) {
            if (!isClicked_ && (isOn || isCheckBox)) onUse();
        });
    }

    // Sets the state. This does not count as an action of the user.
    void showChecked(bool isChecked) {
        const QSignalBlocker silent(this);
        this->setChecked(isChecked);
    }

    void show(const View& label, UserActions& actions, const TextStyle& style, std::uint64_t acknowledged) {
        if (label_ && label_->isFor(label))
            label_->show(label, style, acknowledged);
        else
            label_ = makeElement(label, Site{*this, actions, true}, style, acknowledged);
        QStringList texts;
        label_->addTexts(texts);
        const QString name = texts.join(QLatin1String(", "));
        if (name != this->accessibleName()) this->setAccessibleName(name);
        QWidget::show();
    }

    SizeHint widthHint() {
        const SizeHint label = label_->widthHint();
        const int left = labelLeft();
        return {label.minimum + left, label.preferred + left, label.expands};
    }
    SizeHint heightHint(int width) {
        const int height = std::max(label_->heightHint(std::max(0, width - labelLeft())).preferred, indicatorHeight());
        return {height, height, false};
    }
    void place(const QRect& rect) {
        this->setGeometry(rect.adjusted(0, -focusRingMargin, focusRingMargin, focusRingMargin));
        const int left = labelLeft();
        const int height = label_->heightHint(rect.width() - left).preferred;
        label_->place({left, focusRingMargin + (rect.height() - height) / 2, rect.width() - left, height});
    }

  protected:
    bool hitButton(const QPoint& at) const override { return this->rect().contains(at); }

    void nextCheckState() override {
        isClicked_ = true;
        Button::nextCheckState();
        isClicked_ = false;
    }

    // Reserves the space of the label when the style or a screen reader queries the size of the button.
    void initStyleOption(QStyleOptionButton* option) const override {
        Button::initStyleOption(option);
        option->text = this->accessibleName();
    }

    void focusInEvent(QFocusEvent* event) override {
        Button::focusInEvent(event);
        scrollIntoView(*this, event->reason());
    }

    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        QStyleOptionButton option;
        this->initStyleOption(&option);
        option.text.clear();
        option.palette.setColor(QPalette::Window, outlineBaseColor(option.palette.color(QPalette::WindowText),
                                                                   option.palette.color(QPalette::Window)));
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
    static constexpr int ringGap = 3;  // pixels between the focus ring and the label

    int pixels(QStyle::PixelMetric ofCheckBox, QStyle::PixelMetric ofRadioButton) const {
        return this->style()->pixelMetric(isCheckBox ? ofCheckBox : ofRadioButton, nullptr, this);
    }
    int labelLeft() const {
        const int gap = pixels(QStyle::PM_CheckBoxLabelSpacing, QStyle::PM_RadioButtonLabelSpacing);
        return pixels(QStyle::PM_IndicatorWidth, QStyle::PM_ExclusiveIndicatorWidth) +
               std::max(gap, defaultSpacing(*this));
    }
    int indicatorHeight() const { return pixels(QStyle::PM_IndicatorHeight, QStyle::PM_ExclusiveIndicatorHeight); }

    std::unique_ptr<Element> label_;
    bool isClicked_ = false;
};

}  // namespace kovra
