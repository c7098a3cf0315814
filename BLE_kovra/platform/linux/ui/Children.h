#pragma once

#include <memory>
#include <vector>

#include "BLE_kovra/platform/linux/ui/Element.h"

namespace kovra {

// The elements inside another, kept in step with the views inside its view: each is known by its id, or by its position
// where it has none, and by its kind. What is in both stays, whatever its place.
class Children {
  public:
    void show(const Element& parent, const std::vector<View>& views, const Site& site, const TextStyle& around,
              std::uint64_t heard);

    auto begin() const { return elements_.begin(); }
    auto end() const { return elements_.end(); }
    std::size_t size() const { return elements_.size(); }
    Element* first() const { return elements_.empty() ? nullptr : elements_.front().get(); }

  private:
    std::vector<std::unique_ptr<Element>> elements_;
    std::vector<std::string> keys_;
};

}  // namespace kovra
