#include "BLE_kovra/platform/linux/ui/elements/ToggleElement.h"

namespace kovra {

ToggleElement::ToggleElement(const Site& site)
    : Element(site), button_(std::make_unique<LabelledButton<QCheckBox>>(site.host, [this] {
          changed_ = this->site().actions.changed(path(), button_->isChecked());
      })) {}

void ToggleElement::showKind(const View& view, const TextStyle& style, std::uint64_t heard) {
    static const View nothing{Text{}, {}, {}, {}};
    button_->show(view.children.empty() ? nothing : view.children.front(), site().actions, style, heard);
    if (changed_ <= heard) button_->showChecked(std::get<Toggle>(view.kind).isOn);
}

}  // namespace kovra
