#pragma once

#include <cstdint>
#include <vector>

#include "BLE_kovra/platform/ViewChildren.h"
#include "BLE_kovra/platform/linux/ui/elements/Element.h"

namespace kovra {

class Children {
  public:
    void show(const Element& parent, const std::vector<View>& views, const Site& site, const TextStyle& inherited,
              std::uint64_t acknowledged);

    auto begin() const { return elements_.begin(); }
    auto end() const { return elements_.end(); }
    std::size_t size() const { return elements_.size(); }
    Element* first() const { return elements_.first(); }

  private:
    ViewChildren<Element> elements_;
};

}  // namespace kovra
