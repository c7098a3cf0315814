#include "BLE_kovra/platform/linux/ui/elements/Sharing.h"

#include <algorithm>
#include <numeric>

namespace kovra {

namespace {

int sum(const std::vector<int>& sizes) { return std::accumulate(sizes.begin(), sizes.end(), 0); }

// Returns sizes that do not exceed the limit, unless a minimum does.
std::vector<int> limited(const std::vector<SizeHint>& hints, int limit) {
    std::vector<int> sizes;
    sizes.reserve(hints.size());
    for (const SizeHint& hint : hints) sizes.push_back(std::max(hint.minimum, std::min(hint.preferred, limit)));
    return sizes;
}

// Returns the largest limit with which all sizes fit, or 0.
int largestLimit(int space, const std::vector<SizeHint>& hints) {
    int fits = 0;
    int tooLarge = std::max(1, space + 1);
    while (tooLarge - fits > 1) {
        const int between = fits + (tooLarge - fits) / 2;
        if (sum(limited(hints, between)) <= space)
            fits = between;
        else
            tooLarge = between;
    }
    return fits;
}

std::vector<int> shrunk(int space, const std::vector<SizeHint>& hints) {
    std::vector<int> sizes = limited(hints, largestLimit(space, hints));
    int left = space - sum(sizes);
    for (std::size_t i = 0; i < sizes.size() && left > 0; ++i) {
        if (sizes[i] >= hints[i].preferred) continue;
        ++sizes[i];
        --left;
    }
    return sizes;
}

}  // namespace

std::vector<int> share(int space, const std::vector<SizeHint>& hints) {
    std::vector<int> sizes;
    sizes.reserve(hints.size());
    for (const SizeHint& hint : hints) sizes.push_back(hint.preferred);
    int left = space - sum(sizes);
    if (left < 0) return shrunk(space, hints);
    auto expanding =
        static_cast<int>(std::count_if(hints.begin(), hints.end(), [](const SizeHint& w) { return w.expands; }));
    for (std::size_t i = 0; i < sizes.size() && expanding > 0; ++i) {
        if (!hints[i].expands) continue;
        const int part = left / expanding--;
        sizes[i] += part;
        left -= part;
    }
    return sizes;
}

}  // namespace kovra
