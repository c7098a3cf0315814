#pragma once

#include "BLE_kovra/platform/linux/ui/elements/Children.h"
#include "BLE_kovra/platform/linux/ui/elements/Element.h"

namespace kovra {

class StackElement : public Element {
  public:
    using Element::Element;

    void paint(QPainter& painter) override;
    void addTexts(QStringList& texts) const override;
    void addWidgets(std::vector<QWidget*>& widgets) const override;

  private:
    void showContentOf(const View& view, const TextStyle& style, std::uint64_t acknowledged) override;
    SizeHint contentWidth() override;
    SizeHint contentHeight(int width) override;
    void placeContent(const QRect& rect) override;

    bool isHorizontal() const { return stack_.axis == Stack::Axis::horizontal; }
    int spacing() const;
    int gaps() const;
    std::vector<int> childWidths(int width);
    // Return the size of a child across the axis of the stack, and the distance from the edge of the stack to the
    // child.
    int crossSize(const SizeHint& hint, int space) const;
    int crossOffset(int space, int length) const;

    Stack stack_;
    Children children_;
};

}  // namespace kovra
