#include "BLE_kovra/platform/linux/tray/IconPixmap.h"

#include <algorithm>
#include <cmath>
#include <variant>

namespace kovra {

namespace {

constexpr int side = 4;  // samples in a row of a pixel, and rows of samples

double square(double value) { return value * value; }

// A range of positions along a row, with its ends. It is empty if its end is smaller than its beginning.
struct Span {
    double begin = 1;
    double end = 0;
};

// Returns the positions x at which slope * x + offset is from `low` to `high`.
Span positions(double slope, double offset, double low, double high) {
    if (slope == 0) return low <= offset && offset <= high ? Span{-HUGE_VAL, HUGE_VAL} : Span{};
    const double one = (low - offset) / slope;
    const double other = (high - offset) / slope;
    return {std::min(one, other), std::max(one, other)};
}

// Returns the part of the row at the height `y` inside the rectangle after each side was moved outwards by `growth`.
// The radii of the corners grow by the same length.
Span inside(const RoundedRectangle& rectangle, double growth, double y) {
    const double halfWidth = rectangle.size.width / 2 + growth;
    const double halfHeight = rectangle.size.height / 2 + growth;
    const double fromMiddle = std::abs(y - (rectangle.origin.y + rectangle.size.height / 2));
    if (halfWidth < 0 || fromMiddle > halfHeight) return {};
    const double radiusX = std::max(rectangle.cornerRadii.width + growth, 0.0);
    const double radiusY = std::max(rectangle.cornerRadii.height + growth, 0.0);
    const double intoCorner = fromMiddle - (halfHeight - radiusY);
    double half = halfWidth;
    if (intoCorner > 0) half -= radiusX * (1 - std::sqrt(std::max(1 - square(intoCorner / radiusY), 0.0)));
    const double middle = rectangle.origin.x + rectangle.size.width / 2;
    return {middle - half, middle + half};
}

// What a line covers of one row: `outer` without `hole`.
struct Covered {
    Span outer;
    Span hole;
};

struct CoveredAt {
    double y;
    double lineWidth;

    Covered operator()(const RoundedRectangle& rectangle) const {
        return {inside(rectangle, lineWidth / 2, y), inside(rectangle, -lineWidth / 2, y)};
    }
    Covered operator()(const Segment& segment) const {
        const double dx = segment.to.x - segment.from.x;
        const double dy = segment.to.y - segment.from.y;
        const double lengthSquared = square(dx) + square(dy);
        if (lengthSquared == 0) return {};
        // For a point of the row, the distance along the segment and the distance from it, both times its length.
        const double above = y - segment.from.y;
        const Span along = positions(dx, above * dy - segment.from.x * dx, 0, lengthSquared);
        const double reach = lineWidth / 2 * std::sqrt(lengthSquared);
        const Span across = positions(dy, -above * dx - segment.from.x * dy, -reach, reach);
        return {{std::max(along.begin, across.begin), std::min(along.end, across.end)}, {}};
    }
};

// The numbers of a pixel's samples.
struct Coverage {
    int inked = 0;
    int outlined = 0;
};

// One row of samples, from left to right. A sample is empty, ink or outline.
class Row {
  public:
    Row(int pixels, double width)
        : count_(side * pixels), perPoint_(count_ / width), words_(static_cast<std::size_t>(count_) / bits + 1) {}

    void clear() { std::ranges::fill(words_, Word()); }
    void ink(const Covered& line) {
        change(line, [](Word& word, std::uint64_t mask) {
            word.ink |= mask;
            word.outline &= ~mask;
        });
    }
    // Only empty samples become outline.
    void outline(const Covered& line) {
        change(line, [](Word& word, std::uint64_t mask) { word.outline |= mask & ~word.ink; });
    }
    void remove(const Covered& line, bool leavesOutline) {
        change(line, [leavesOutline](Word& word, std::uint64_t mask) {
            if (leavesOutline) word.outline |= mask & word.ink;
            word.ink &= ~mask;
        });
    }

    // Adds the samples to the pixels of this row.
    void addTo(std::vector<Coverage>& pixels) const {
        auto pixel = pixels.begin();
        for (Word word : words_) {
            const auto next = pixel + std::min<std::ptrdiff_t>(bits / side, pixels.end() - pixel);
            for (auto each = pixel; (word.ink | word.outline) != 0; ++each) {
                each->inked += ones(word.ink);
                each->outlined += ones(word.outline);
                word = {word.ink >> side, word.outline >> side};
            }
            pixel = next;
        }
    }

  private:
    static constexpr std::size_t bits = 64;

    // One bit for each sample, the leftmost sample in the lowest bit. At most one of both is set.
    struct Word {
        std::uint64_t ink = 0;
        std::uint64_t outline = 0;
    };
    struct Range {
        int begin;
        int end;
    };

    // Returns the number of ones in the lowest four bits. Each digit is the number for its position.
    static int ones(std::uint64_t nibble) { return static_cast<int>(0x4332'3221'3221'2110U >> nibble % 16 * 4 & 0xFU); }

    // The first sample is half a sample from the left.
    Range range(const Span& span) const {
        if (span.end < span.begin) return {0, 0};
        const double begin = std::clamp(span.begin * perPoint_ - 0.5, 0.0, double(count_));
        const double end = std::clamp(span.end * perPoint_ + 0.5, 0.0, double(count_));
        const int whole = static_cast<int>(begin);
        return {whole < begin ? whole + 1 : whole, static_cast<int>(end)};
    }

    template <typename Change>
    void change(const Covered& line, Change change) {
        const Range outer = range(line.outer);
        const Range hole = range(line.hole);
        if (hole.begin >= hole.end) return changeAll(outer, change);
        changeAll({outer.begin, std::min(hole.begin, outer.end)}, change);
        changeAll({std::max(hole.end, outer.begin), outer.end}, change);
    }
    template <typename Change>
    void changeAll(Range range, Change change) {
        while (range.begin < range.end) {
            const auto at = static_cast<std::size_t>(range.begin);
            const std::size_t length = std::min(static_cast<std::size_t>(range.end) - at, bits - at % bits);
            change(words_[at / bits], (~std::uint64_t(0) >> (bits - length)) << at % bits);
            range.begin += static_cast<int>(length);
        }
    }

    int count_;
    double perPoint_;
    std::vector<Word> words_;
};

// Draws the row at the height `y`. `outline` is the width of the outline on each side of a stroke, 0 if there is none.
void draw(Row& row, const std::vector<Stroke>& strokes, double y, double outline) {
    row.clear();
    for (const Stroke& stroke : strokes) {
        const Covered line = std::visit(CoveredAt{y, stroke.lineWidth}, stroke.shape);
        if (stroke.isGap) {
            row.remove(line, outline > 0);
            continue;
        }
        if (outline > 0) row.outline(std::visit(CoveredAt{y, stroke.lineWidth + 2 * outline}, stroke.shape));
        row.ink(line);
    }
}

void append(std::vector<std::uint8_t>& bytes, const Coverage& coverage, const IconPaint& paint) {
    const auto [inked, outlined] = coverage;
    const int covered = inked + outlined;
    bytes.push_back(static_cast<std::uint8_t>(covered * 255 / (side * side)));
    for (const int shift : {16, 8, 0}) {
        const int ink = static_cast<std::uint8_t>(paint.ink >> shift);
        const int other = static_cast<std::uint8_t>(paint.outline.value_or(0) >> shift);
        bytes.push_back(static_cast<std::uint8_t>(outlined == 0 ? ink : (inked * ink + outlined * other) / covered));
    }
}

}  // namespace

// Each pixel has 4 by 4 samples. A row of them is drawn at once: which part of a row a line covers follows from a few
// square roots, while each sample by itself would take as many comparisons.
std::vector<std::uint8_t> argbPixmap(const Drawing& drawing, int pixels, const IconPaint& paint) {
    std::vector<std::uint8_t> bytes;
    bytes.reserve(static_cast<std::size_t>(pixels) * static_cast<std::size_t>(pixels) * 4);
    const Drawing shown = fittedTo(pixels, drawing);
    const double outline = paint.outline ? outlineShare * shown.size.width : 0;
    Row row(pixels, shown.size.width);
    for (int down = 0; down < pixels; ++down) {
        std::vector<Coverage> coverages(static_cast<std::size_t>(pixels));
        for (int line = 0; line < side; ++line) {
            const double fromTop = (down + (line + 0.5) / side) / pixels;
            draw(row, shown.strokes, (1 - fromTop) * shown.size.height, outline);
            row.addTo(coverages);
        }
        for (const Coverage& each : coverages) append(bytes, each, paint);
    }
    return bytes;
}

}  // namespace kovra
