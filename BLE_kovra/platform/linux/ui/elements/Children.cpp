#include "BLE_kovra/platform/linux/ui/elements/Children.h"

#include <cstddef>
#include <string>

namespace kovra {

void Children::show(const Element& parent, const std::vector<View>& views, const Site& site, const TextStyle& inherited,
                    std::uint64_t acknowledged) {
    const auto setKey = [&](Element& element, const View& view, std::size_t position) {
        element.setKey(&parent, view.id.empty() ? std::to_string(position) : view.id);
    };
    elements_.show(
        views,
        [&](const View& view, std::size_t position) {
            auto made = makeElement(view, site, inherited, acknowledged);
            setKey(*made, view, position);
            return made;
        },
        [&](Element& element, const View& view, std::size_t position) {
            element.show(view, inherited, acknowledged);
            setKey(element, view, position);
        });
}

}  // namespace kovra
