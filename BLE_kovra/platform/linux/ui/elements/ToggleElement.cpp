#include "BLE_kovra/platform/linux/ui/elements/ToggleElement.h"

namespace kovra {

ToggleElement::ToggleElement(const Site& site)
    : Element(site), button_(std::make_unique<LabelledButton<QCheckBox>>(site.host, [this] {
          lastChange_ = this->site().actions.changed(path(), button_->isChecked());
      })) {}

void ToggleElement::showContentOf(const View& view, const TextStyle& style, std::uint64_t acknowledged) {
    static const View noLabel{Text{}, {}, {}, {}};
    button_->show(view.children.empty() ? noLabel : view.children.front(), site().actions, style, acknowledged);
    if (lastChange_ <= acknowledged) button_->showChecked(std::get<Toggle>(view.kind).isOn);
}

}  // namespace kovra
