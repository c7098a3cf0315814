#pragma once

#include <cstdint>
#include <memory>

#include "BLE_kovra/platform/linux/ui/elements/Element.h"
#include "BLE_kovra/platform/linux/ui/elements/LabelledButton.h"

namespace kovra {

// A check box. Updates that do not yet acknowledge the user's change leave it unchanged.
class ToggleElement : public Element {
  public:
    explicit ToggleElement(const Site& site);

    void addTexts(QStringList& texts) const override { texts.append(button_->accessibleName()); }
    void addWidgets(std::vector<QWidget*>& widgets) const override { widgets.push_back(button_.get()); }

  private:
    void showContentOf(const View& view, const TextStyle& style, std::uint64_t acknowledged) override;
    SizeHint contentWidth() override { return button_->widthHint(); }
    SizeHint contentHeight(int width) override { return button_->heightHint(width); }
    void placeContent(const QRect& rect) override { button_->place(rect); }

    std::unique_ptr<LabelledButton<QCheckBox>> button_;
    std::uint64_t lastChange_ = 0;  // number of the user's last change
};

}  // namespace kovra
