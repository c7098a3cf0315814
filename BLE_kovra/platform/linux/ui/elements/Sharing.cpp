#include "BLE_kovra/platform/linux/ui/elements/Sharing.h"

#include <algorithm>
#include <numeric>

namespace kovra {

namespace {

int sum(const std::vector<int>& sizes) { return std::accumulate(sizes.begin(), sizes.end(), 0); }

// None longer than the limit, but for its least.
std::vector<int> limited(const std::vector<Wish>& wishes, int limit) {
    std::vector<int> sizes;
    sizes.reserve(wishes.size());
    for (const Wish& wish : wishes) sizes.push_back(std::max(wish.least, std::min(wish.ideal, limit)));
    return sizes;
}

// The highest limit with which all fit, or 0.
int highestLimit(int room, const std::vector<Wish>& wishes) {
    int fits = 0;
    int tooHigh = std::max(1, room + 1);
    while (tooHigh - fits > 1) {
        const int between = fits + (tooHigh - fits) / 2;
        if (sum(limited(wishes, between)) <= room)
            fits = between;
        else
            tooHigh = between;
    }
    return fits;
}

std::vector<int> shortened(int room, const std::vector<Wish>& wishes) {
    std::vector<int> sizes = limited(wishes, highestLimit(room, wishes));
    int left = room - sum(sizes);
    for (std::size_t i = 0; i < sizes.size() && left > 0; ++i) {
        if (sizes[i] >= wishes[i].ideal) continue;
        ++sizes[i];
        --left;
    }
    return sizes;
}

}  // namespace

std::vector<int> share(int room, const std::vector<Wish>& wishes) {
    std::vector<int> sizes;
    sizes.reserve(wishes.size());
    for (const Wish& wish : wishes) sizes.push_back(wish.ideal);
    int left = room - sum(sizes);
    if (left < 0) return shortened(room, wishes);
    auto takers =
        static_cast<int>(std::count_if(wishes.begin(), wishes.end(), [](const Wish& w) { return w.takesRest; }));
    for (std::size_t i = 0; i < sizes.size() && takers > 0; ++i) {
        if (!wishes[i].takesRest) continue;
        const int part = left / takers--;
        sizes[i] += part;
        left -= part;
    }
    return sizes;
}

}  // namespace kovra
