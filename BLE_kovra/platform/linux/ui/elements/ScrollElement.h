#pragma once

#include <QScrollArea>
#include <memory>

#include "BLE_kovra/platform/linux/ui/elements/Children.h"
#include "BLE_kovra/platform/linux/ui/elements/Element.h"
#include "BLE_kovra/platform/linux/ui/elements/Surface.h"

namespace kovra {

// A scroll area around its child. It is never taller than the child, and shows a scroll bar if it is shorter. Updates
// of the child keep the scroll position as far as possible.
class ScrollElement : public Element {
  public:
    explicit ScrollElement(const Site& site);

    void addTexts(QStringList& texts) const override;
    void addWidgets(std::vector<QWidget*>& widgets) const override;

  private:
    void showContentOf(const View& view, const TextStyle& style, std::uint64_t acknowledged) override;
    SizeHint contentWidth() override;
    SizeHint contentHeight(int width) override;
    void placeContent(const QRect& rect) override;
    int widthBesideBar(int width) const;

    std::unique_ptr<QScrollArea> area_;
    Surface* surface_;
    Children children_;
};

}  // namespace kovra
