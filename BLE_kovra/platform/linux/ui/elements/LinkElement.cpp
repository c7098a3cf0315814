#include "BLE_kovra/platform/linux/ui/elements/LinkElement.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QStyleOptionFocusRect>

#include "BLE_kovra/platform/linux/ui/elements/LabelledButton.h"

namespace kovra {

namespace {

class AccessibleLink : public QAccessibleWidget {
  public:
    explicit AccessibleLink(LinkButton& button) : QAccessibleWidget(&button, QAccessible::Link), button_(button) {}

    QStringList actionNames() const override { return {pressAction(), setFocusAction()}; }
    void doAction(const QString& name) override {
        if (name == pressAction())
            button_.click();
        else
            QAccessibleWidget::doAction(name);
    }

  private:
    LinkButton& button_;
};

QAccessibleInterface* accessibleLink(const QString&, QObject* object) {
    auto* button = dynamic_cast<LinkButton*>(object);
    return button == nullptr ? nullptr : new AccessibleLink(*button);
}

}  // namespace

LinkButton::LinkButton(QWidget& parent) : QAbstractButton(&parent) {
    QAccessible::removeFactory(&accessibleLink);
    QAccessible::installFactory(&accessibleLink);  // the newest factory is queried first
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::PointingHandCursor);
    setAttribute(Qt::WA_Hover);
}

void LinkButton::show(const QString& title, const QFont& font, Color color) {
    QFont underlined = font;
    underlined.setUnderline(true);
    if (paragraph_.set(title, underlined) || color != color_) update();
    color_ = color;
    if (title != accessibleName()) setAccessibleName(title);
    QWidget::show();
}

void LinkButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const bool isPointedAt = underMouse() || isDown();
    paragraph_.paint(painter, rect(), roleColor(isPointedAt ? Color::primary : color_, palette()));
    if (!hasFocus()) return;
    QStyleOptionFocusRect ring;
    ring.initFrom(this);
    ring.backgroundColor = palette().color(QPalette::Window);
    style()->drawPrimitive(QStyle::PE_FrameFocusRect, &ring, &painter, this);
}

void LinkButton::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        click();
    else
        QAbstractButton::keyPressEvent(event);
}

void LinkButton::focusInEvent(QFocusEvent* event) {
    QAbstractButton::focusInEvent(event);
    scrollIntoView(*this, event->reason());
}

LinkElement::LinkElement(const Site& site) : Element(site), button_(std::make_unique<LinkButton>(site.host)) {
    QObject::connect(button_.get(), &LinkButton::clicked, button_.get(),
                     [this] { this->site().actions.followed(path()); });
}

void LinkElement::showContentOf(const View& view, const TextStyle& style, std::uint64_t) {
    button_->show(plainText(std::get<Link>(view.kind).title), style.qtFont(), style.color);
}

SizeHint LinkElement::contentWidth() {
    return {button_->paragraph().minimumWidth(), button_->paragraph().preferredWidth(), false};
}

SizeHint LinkElement::contentHeight(int width) {
    const int height = button_->paragraph().heightForWidth(width);
    return {height, height, false};
}

}  // namespace kovra
