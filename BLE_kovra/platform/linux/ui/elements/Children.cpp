#include "BLE_kovra/platform/linux/ui/elements/Children.h"

#include <cstddef>
#include <string>

namespace kovra {

void Children::show(const Element& parent, const std::vector<View>& views, const Site& site, const TextStyle& around,
                    std::uint64_t heard) {
    const auto know = [&](Element& element, const View& view, std::size_t position) {
        element.setKey(&parent, view.id.empty() ? std::to_string(position) : view.id);
    };
    elements_.show(
        views,
        [&](const View& view, std::size_t position) {
            auto made = makeElement(view, site, around, heard);
            know(*made, view, position);
            return made;
        },
        [&](Element& element, const View& view, std::size_t position) {
            element.show(view, around, heard);
            know(element, view, position);
        });
}

}  // namespace kovra
