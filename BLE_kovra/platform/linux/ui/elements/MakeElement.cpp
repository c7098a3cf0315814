#include "BLE_kovra/platform/linux/ui/elements/Element.h"
#include "BLE_kovra/platform/linux/ui/elements/LinkElement.h"
#include "BLE_kovra/platform/linux/ui/elements/PaintedElements.h"
#include "BLE_kovra/platform/linux/ui/elements/PickerElement.h"
#include "BLE_kovra/platform/linux/ui/elements/ScrollElement.h"
#include "BLE_kovra/platform/linux/ui/elements/StackElement.h"
#include "BLE_kovra/platform/linux/ui/elements/TextElement.h"
#include "BLE_kovra/platform/linux/ui/elements/ToggleElement.h"

namespace kovra {

namespace {

struct Make {
    const Site& site;

    std::unique_ptr<Element> operator()(const Text&) const {
        if (site.isInControl) return std::make_unique<LabelElement>(site);
        return std::make_unique<TextElement>(site);
    }
    std::unique_ptr<Element> operator()(const Circle&) const { return std::make_unique<CircleElement>(site); }
    std::unique_ptr<Element> operator()(const Toggle&) const { return std::make_unique<ToggleElement>(site); }
    std::unique_ptr<Element> operator()(const Picker&) const { return std::make_unique<PickerElement>(site); }
    std::unique_ptr<Element> operator()(const Link&) const { return std::make_unique<LinkElement>(site); }
    std::unique_ptr<Element> operator()(const Divider&) const { return std::make_unique<DividerElement>(site); }
    std::unique_ptr<Element> operator()(const Spacer&) const { return std::make_unique<SpacerElement>(site); }
    std::unique_ptr<Element> operator()(const Stack&) const { return std::make_unique<StackElement>(site); }
    std::unique_ptr<Element> operator()(const ScrollView&) const { return std::make_unique<ScrollElement>(site); }
};

}  // namespace

std::unique_ptr<Element> makeElement(const View& view, const Site& site, const TextStyle& inherited,
                                     std::uint64_t acknowledged) {
    auto element = std::visit(Make{site}, view.kind);
    element->show(view, inherited, acknowledged);
    return element;
}

}  // namespace kovra
