#include "BLE_kovra/platform/linux/ui/Children.h"

#include <unordered_map>
#include <utility>

namespace kovra {

namespace {

// An id that looks like a position is none.
std::string identity(const View& view, std::size_t position) {
    return view.id.empty() ? "#" + std::to_string(position) : "=" + view.id;
}

}  // namespace

void Children::show(const Element& parent, const std::vector<View>& views, const Site& site, const TextStyle& around,
                    std::uint64_t heard) {
    std::unordered_map<std::string, std::unique_ptr<Element>> before;
    for (std::size_t i = 0; i < elements_.size(); ++i) before.emplace(std::move(keys_[i]), std::move(elements_[i]));
    elements_.clear();
    keys_.clear();
    for (std::size_t i = 0; i < views.size(); ++i) {
        const View& view = views[i];
        keys_.push_back(identity(view, i));
        const auto found = before.find(keys_.back());
        if (found != before.end() && found->second->isFor(view)) {
            elements_.push_back(std::move(found->second));
            before.erase(found);
            elements_.back()->show(view, around, heard);
        } else {
            elements_.push_back(makeElement(view, site, around, heard));
        }
        elements_.back()->setKey(&parent, view.id.empty() ? std::to_string(i) : view.id);
    }
}

}  // namespace kovra
