#pragma once

#include <QAbstractButton>
#include <memory>

#include "BLE_kovra/platform/linux/ui/elements/Element.h"
#include "BLE_kovra/platform/linux/ui/style/Paragraph.h"

namespace kovra {

// An underlined text. A click, Return, Enter or Space follows the link. Screen readers announce it as a link.
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
    void showContentOf(const View& view, const TextStyle& style, std::uint64_t acknowledged) override;
    SizeHint contentWidth() override;
    SizeHint contentHeight(int width) override;
    void placeContent(const QRect& rect) override { button_->setGeometry(rect); }

    std::unique_ptr<LinkButton> button_;
};

}  // namespace kovra
