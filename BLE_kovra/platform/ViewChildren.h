#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "BLE_kovra/platform/View.h"

namespace kovra {

// The elements that render the children of a view. An element belongs to the child with its id or, if the child has no
// id, to the child at its position. It is reused if its isFor() accepts that child, even if the child has moved.
template <typename Element>
class ViewChildren {
  public:
    // Renders these views instead of the previous ones. make(view, position) returns a new element; keep(element, view,
    // position) updates a reused one. Returns the elements that no view uses any more.
    template <typename Make, typename Keep>
    std::vector<std::unique_ptr<Element>> show(const std::vector<View>& views, Make make, Keep keep) {
        std::unordered_map<std::string, std::unique_ptr<Element>> before;
        for (std::size_t i = 0; i < elements_.size(); ++i) before.emplace(std::move(keys_[i]), std::move(elements_[i]));
        elements_.clear();
        keys_.clear();
        for (std::size_t i = 0; i < views.size(); ++i) {
            keys_.push_back(key(views[i], i));
            const auto found = before.find(keys_.back());
            if (found != before.end() && found->second->isFor(views[i])) {
                elements_.push_back(std::move(found->second));
                before.erase(found);
                keep(*elements_.back(), views[i], i);
            } else {
                elements_.push_back(make(views[i], i));
            }
        }
        std::vector<std::unique_ptr<Element>> unused;
        for (auto& [key, element] : before) unused.push_back(std::move(element));
        return unused;
    }

    auto begin() const { return elements_.begin(); }
    auto end() const { return elements_.end(); }
    std::size_t size() const { return elements_.size(); }
    Element* first() const { return elements_.empty() ? nullptr : elements_.front().get(); }

  private:
    // Returns the key of a view. Because of the prefixes, an id never equals a position.
    static std::string key(const View& view, std::size_t position) {
        return view.id.empty() ? "#" + std::to_string(position) : "=" + view.id;
    }

    std::vector<std::unique_ptr<Element>> elements_;
    std::vector<std::string> keys_;
};

}  // namespace kovra
