#pragma once

#include "BLE_kovra/platform/linux/ui/elements/Element.h"
#include "BLE_kovra/platform/linux/ui/style/Paragraph.h"

namespace kovra {

// What has no widget of its own: its host paints it.
class PaintedElement : public Element {
  public:
    using Element::Element;

  protected:
    void placeKind(const QRect& place) override;
    const QRect& place() const { return place_; }
    void repaint() const;

  private:
    QRect place_;
};

// A text inside a control.
class LabelElement : public PaintedElement {
  public:
    using PaintedElement::PaintedElement;
    void paint(QPainter& painter) override;
    void addTexts(QStringList& texts) const override { texts.append(paragraph_.text()); }

  private:
    void showKind(const View& view, const TextStyle& style, std::uint64_t heard) override;
    Wish kindWidth() override;
    Wish kindHeight(int width) override;

    Paragraph paragraph_;
    Color color_ = Color::primary;
};

// As large as there is room.
class CircleElement : public PaintedElement {
  public:
    using PaintedElement::PaintedElement;
    void paint(QPainter& painter) override;

  private:
    void showKind(const View& view, const TextStyle& style, std::uint64_t heard) override;
    Wish kindWidth() override { return {0, 0, true}; }
    Wish kindHeight(int) override { return {0, 0, true}; }

    Circle circle_;
};

// A thin line across its stack.
class DividerElement : public PaintedElement {
  public:
    using PaintedElement::PaintedElement;
    void paint(QPainter& painter) override;

  private:
    void showKind(const View&, const TextStyle&, std::uint64_t) override {}
    Wish kindWidth() override { return {0, 0, true}; }
    Wish kindHeight(int) override { return {1, 1, false}; }
};

class SpacerElement : public Element {
  public:
    using Element::Element;

  private:
    void showKind(const View&, const TextStyle&, std::uint64_t) override {}
    Wish kindWidth() override { return {0, 0, true}; }
    Wish kindHeight(int) override { return {}; }
    void placeKind(const QRect&) override {}
};

}  // namespace kovra
