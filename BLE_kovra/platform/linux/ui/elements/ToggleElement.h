#pragma once

#include <cstdint>
#include <memory>

#include "BLE_kovra/platform/linux/ui/elements/Element.h"
#include "BLE_kovra/platform/linux/ui/elements/LabelledButton.h"

namespace kovra {

// A check box. What the user made of it stands until a view comes that knows of that change.
class ToggleElement : public Element {
  public:
    explicit ToggleElement(const Site& site);

    void addTexts(QStringList& texts) const override { texts.append(button_->accessibleName()); }
    void addWidgets(std::vector<QWidget*>& widgets) const override { widgets.push_back(button_.get()); }

  private:
    void showKind(const View& view, const TextStyle& style, std::uint64_t heard) override;
    Wish kindWidth() override { return button_->wishedWidth(); }
    Wish kindHeight(int width) override { return button_->wishedHeight(width); }
    void placeKind(const QRect& place) override { button_->place(place); }

    std::unique_ptr<LabelledButton<QCheckBox>> button_;
    std::uint64_t changed_ = 0;  // the number of the user's last change of it
};

}  // namespace kovra
