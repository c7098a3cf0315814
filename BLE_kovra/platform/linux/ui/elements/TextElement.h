#pragma once

#include <QLabel>
#include <memory>

#include "BLE_kovra/platform/linux/ui/elements/Element.h"
#include "BLE_kovra/platform/linux/ui/style/Paragraph.h"

namespace kovra {

// A label that also wraps within a word that is too long for the line.
class TextLabel : public QLabel {
  public:
    explicit TextLabel(QWidget& parent);

    void show(const QString& text, const QFont& font, Color color);
    Paragraph& paragraph() { return paragraph_; }

  private:
    void paintEvent(QPaintEvent* event) override;

    Paragraph paragraph_;
    Color color_ = Color::primary;
};

// A text outside of any control.
class TextElement : public Element {
  public:
    explicit TextElement(const Site& site);

    void addTexts(QStringList& texts) const override { texts.append(label_->text()); }
    void addWidgets(std::vector<QWidget*>& widgets) const override { widgets.push_back(label_.get()); }

  private:
    void showContentOf(const View& view, const TextStyle& style, std::uint64_t acknowledged) override;
    SizeHint contentWidth() override;
    SizeHint contentHeight(int width) override;
    void placeContent(const QRect& rect) override;

    std::unique_ptr<TextLabel> label_;
};

}  // namespace kovra
