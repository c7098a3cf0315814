#pragma once

#include <QScrollArea>
#include <memory>

#include "BLE_kovra/platform/linux/ui/elements/Children.h"
#include "BLE_kovra/platform/linux/ui/elements/Element.h"
#include "BLE_kovra/platform/linux/ui/elements/Surface.h"

namespace kovra {

// An opening on its child, no higher than the child, with a scroll bar where it is lower. How far it is scrolled stays
// whatever becomes of the child, as long as there is that much to scroll.
class ScrollElement : public Element {
  public:
    explicit ScrollElement(const Site& site);

    void addTexts(QStringList& texts) const override;
    void addWidgets(std::vector<QWidget*>& widgets) const override;

  private:
    void showKind(const View& view, const TextStyle& style, std::uint64_t heard) override;
    Wish kindWidth() override;
    Wish kindHeight(int width) override;
    void placeKind(const QRect& place) override;
    int besideBar(int width) const;  // what is left of the width beside the scroll bar

    std::unique_ptr<QScrollArea> area_;
    Surface* surface_;
    Children children_;
};

}  // namespace kovra
