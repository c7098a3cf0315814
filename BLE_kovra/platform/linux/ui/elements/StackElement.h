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
    void showKind(const View& view, const TextStyle& style, std::uint64_t heard) override;
    Wish kindWidth() override;
    Wish kindHeight(int width) override;
    void placeKind(const QRect& place) override;

    bool isHorizontal() const { return stack_.axis == Stack::Axis::horizontal; }
    int spacing() const;
    int gaps() const;
    std::vector<int> childWidths(int width);
    // What a child has of the room across the stack's axis, and where it begins.
    int across(const Wish& wish, int room) const;
    int offset(int room, int length) const;

    Stack stack_;
    Children children_;
};

}  // namespace kovra
