#pragma once

#include <vector>

namespace kovra {

// What a view needs of a width or a height and what it would have, in pixels. `takesRest`: and whatever is left
// besides.
struct Wish {
    int least = 0;
    int ideal = 0;
    bool takesRest = false;
    bool operator==(const Wish&) const = default;
};

// What each gets of the room. Where it is short the longest give way first, none below its least, so that the sum may
// be more than the room. What is left goes in equal parts to those that take it.
std::vector<int> share(int room, const std::vector<Wish>& wishes);

}  // namespace kovra
