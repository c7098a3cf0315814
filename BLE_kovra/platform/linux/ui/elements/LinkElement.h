#pragma once

#include <QAbstractButton>
#include <memory>

#include "BLE_kovra/platform/linux/ui/elements/Element.h"
#include "BLE_kovra/platform/linux/ui/style/Paragraph.h"

namespace kovra {

// An underlined text that is followed by a click, and with the keyboard by Return, Enter and Space. To screen readers
// it is a link.
class LinkButton : public QAbstractButton {
  public:
    explicit LinkButton(QWidget& parent);

    void show(const QString& title, const QFont& font, Color color);
    Paragraph& paragraph() { return paragraph_; }

  private:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;

    Paragraph paragraph_;
    Color color_ = Color::primary;
};

class LinkElement : public Element {
  public:
    explicit LinkElement(const Site& site);

    void addTexts(QStringList& texts) const override { texts.append(button_->accessibleName()); }
    void addWidgets(std::vector<QWidget*>& widgets) const override { widgets.push_back(button_.get()); }

  private:
    void showKind(const View& view, const TextStyle& style, std::uint64_t heard) override;
    Wish kindWidth() override;
    Wish kindHeight(int width) override;
    void placeKind(const QRect& place) override { button_->setGeometry(place); }

    std::unique_ptr<LinkButton> button_;
};

}  // namespace kovra
