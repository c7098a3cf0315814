#pragma once

#include "BLE_kovra/platform/linux/ui/elements/Element.h"
#include "BLE_kovra/platform/linux/ui/style/Paragraph.h"

namespace kovra {

// An element without a widget of its own, which its host paints.
class PaintedElement : public Element {
  public:
    using Element::Element;

  protected:
    void placeContent(const QRect& rect) override;
    const QRect& rect() const { return rect_; }
    void repaint() const;

  private:
    QRect rect_;
};

// A text inside a control, which paints it.
class LabelElement : public PaintedElement {
  public:
    using PaintedElement::PaintedElement;
    void paint(QPainter& painter) override;
    void addTexts(QStringList& texts) const override { texts.append(paragraph_.text()); }

  private:
    void showContentOf(const View& view, const TextStyle& style, std::uint64_t acknowledged) override;
    SizeHint contentWidth() override;
    SizeHint contentHeight(int width) override;

    Paragraph paragraph_;
    Color color_ = Color::primary;
};

// A circle that fills the available space.
class CircleElement : public PaintedElement {
  public:
    using PaintedElement::PaintedElement;
    void paint(QPainter& painter) override;

  private:
    void showContentOf(const View& view, const TextStyle& style, std::uint64_t acknowledged) override;
    SizeHint contentWidth() override { return {0, 0, true}; }
    SizeHint contentHeight(int) override { return {0, 0, true}; }

    Circle circle_;
};

// A line one pixel thick, as wide as the available space.
class DividerElement : public PaintedElement {
  public:
    using PaintedElement::PaintedElement;
    void paint(QPainter& painter) override;

  private:
    void showContentOf(const View&, const TextStyle&, std::uint64_t) override {}
    SizeHint contentWidth() override { return {0, 0, true}; }
    SizeHint contentHeight(int) override { return {1, 1, false}; }
};

class SpacerElement : public Element {
  public:
    using Element::Element;

  private:
    void showContentOf(const View&, const TextStyle&, std::uint64_t) override {}
    SizeHint contentWidth() override { return {0, 0, true}; }
    SizeHint contentHeight(int) override { return {}; }
    void placeContent(const QRect&) override {}
};

}  // namespace kovra
