#pragma once

#include <vector>

namespace kovra {

// The least width or height that a view needs, and the one that it prefers, in pixels. A view that expands takes more
// if space is left.
struct SizeHint {
    int minimum = 0;
    int preferred = 0;
    bool expands = false;
    bool operator==(const SizeHint&) const = default;
};

// Distributes `space` pixels among views and returns their sizes. If there is too little space, the longest sizes
// shrink first, but none below its minimum, so the sum may exceed the space. Remaining space goes in equal parts to the
// views that expand.
std::vector<int> share(int space, const std::vector<SizeHint>& hints);

}  // namespace kovra
