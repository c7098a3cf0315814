#include "BLE_kovra/platform/linux/tray/IconPixmap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <variant>
#include <vector>

namespace kovra {
namespace {

const Drawing frameAndSlash{
    .name = "test",
    .size = {18, 18},
    .strokes = {{RoundedRectangle{.origin = {2, 4}, .size = {14, 10}, .cornerRadii = {3, 3}}, 2},
                {Segment{.from = {9, 4}, .to = {9, 9}}, 1}}};

struct Picture {
    Picture(const Drawing& drawing, int side, IconLook look = IconLook::onDark)
        : pixels(side), bytes(argbPixmap(drawing, side, paintOf(look))) {}

    int alpha(int column, int row) const { return bytes.at(static_cast<std::size_t>(row * pixels + column) * 4); }
    std::uint32_t color(int column, int row) const {
        const std::size_t at = static_cast<std::size_t>(row * pixels + column) * 4;
        return static_cast<std::uint32_t>(bytes.at(at + 1) << 16 | bytes.at(at + 2) << 8 | bytes.at(at + 3));
    }

    int pixels;
    std::vector<std::uint8_t> bytes;
};

TEST(IconPixmapTest, HasFourBytesForEachPixel) {
    for (const int pixels : {1, 16, 22, 48}) {
        EXPECT_EQ(Picture(frameAndSlash, pixels).bytes.size(), static_cast<std::size_t>(pixels * pixels * 4));
    }
}

TEST(IconPixmapTest, HasTheInkOfItsLookEverywhereAndShowsItOnlyInItsAlpha) {
    for (const IconLook look : {IconLook::recolored, IconLook::onLight, IconLook::onDark}) {
        const Picture picture(frameAndSlash, 36, look);
        for (int i = 0; i < 36 * 36; ++i) ASSERT_EQ(picture.color(i % 36, i / 36), paintOf(look).ink);
    }
}

TEST(IconPixmapTest, SurroundsTheInkOfAnOutlinedLookWithItsOutline) {
    const Picture picture(frameAndSlash, 180, IconLook::outlinedLight);  // ten pixels a point
    EXPECT_EQ(picture.color(20, 90), lightInk);                          // on the left side of the rectangle: x is 2
    for (const int column : {5, 34}) {  // up to 0.81 points outside and inside of the line
        EXPECT_EQ(picture.color(column, 90), darkInk) << column;
        EXPECT_EQ(picture.alpha(column, 90), 255) << column;
    }
    for (const int column : {0, 40}) EXPECT_EQ(picture.alpha(column, 90), 0) << column;
}

TEST(IconPixmapTest, OutlinesBothSidesOfASymmetricalDrawingEqually) {
    for (const int pixels : {16, 22, 40}) {
        const Picture picture(frameAndSlash, pixels, IconLook::outlinedLight);
        for (int i = 0; i < pixels * pixels; ++i) {
            const int column = i % pixels, opposite = pixels - 1 - column, row = i / pixels;
            ASSERT_EQ(picture.alpha(column, row), picture.alpha(opposite, row)) << column << ", " << row;
            ASSERT_EQ(picture.color(column, row), picture.color(opposite, row)) << column << ", " << row;
        }
    }
}

const Drawing frameWithGap{.name = "test",
                           .size = {18, 18},
                           .strokes = {{RoundedRectangle{.origin = {2, 4}, .size = {14, 10}, .cornerRadii = {3, 3}}, 2},
                                       {Segment{.from = {0, 9}, .to = {18, 9}}, 4, true},
                                       {Segment{.from = {0, 9}, .to = {18, 9}}, 2}}};

TEST(IconPixmapTest, LeavesAGapInTheStrokesBeforeItButNotInThoseAfterIt) {
    const Picture picture(frameWithGap, 18);
    for (const int row : {6, 11}) EXPECT_EQ(picture.alpha(1, row), 255) << row;  // the frame beside the gap
    for (const int row : {7, 10}) EXPECT_EQ(picture.alpha(1, row), 0) << row;    // the gap
    for (const int row : {8, 9}) EXPECT_EQ(picture.alpha(1, row), 255) << row;   // the line in the gap
    for (const int row : {8, 9}) EXPECT_EQ(picture.alpha(9, row), 255) << row;
}

TEST(IconPixmapTest, FillsTheGapOfAnOutlinedLookWithItsOutline) {
    const Picture picture(frameWithGap, 180, IconLook::outlinedDark);
    EXPECT_EQ(picture.color(20, 75), lightInk);
    EXPECT_EQ(picture.color(20, 90), darkInk);
}

TEST(IconPixmapTest, DrawsTheGlyphForItsNumberOfPixels) {
    Drawing drawing = frameAndSlash;
    drawing.glyphs.push_back({.pixels = 16, .strokes = {{Segment{.from = {0, 8}, .to = {16, 8}}, 2}}});
    const Picture picture(drawing, 16);
    for (int i = 0; i < 256; ++i) EXPECT_EQ(picture.alpha(i % 16, i / 16), i / 16 == 7 || i / 16 == 8 ? 255 : 0);
}

// Tells for one point whether a line covers it, from the definition of its shape.
struct Covers {
    double lineWidth;
    Point point;

    bool operator()(const RoundedRectangle& rectangle) const {
        return isInside(rectangle, lineWidth / 2) && !isInside(rectangle, -lineWidth / 2);
    }
    bool operator()(const Segment& segment) const {
        const double dx = segment.to.x - segment.from.x;
        const double dy = segment.to.y - segment.from.y;
        const double length = std::hypot(dx, dy);
        const double along = ((point.x - segment.from.x) * dx + (point.y - segment.from.y) * dy) / length;
        const double across = ((point.x - segment.from.x) * dy - (point.y - segment.from.y) * dx) / length;
        return along >= 0 && along <= length && std::abs(across) <= lineWidth / 2;
    }
    bool isInside(const RoundedRectangle& rectangle, double growth) const {
        const double halfWidth = rectangle.size.width / 2 + growth;
        const double halfHeight = rectangle.size.height / 2 + growth;
        const double x = std::abs(point.x - rectangle.origin.x - rectangle.size.width / 2);
        const double y = std::abs(point.y - rectangle.origin.y - rectangle.size.height / 2);
        if (x > halfWidth || y > halfHeight) return false;
        const double radiusX = std::max(rectangle.cornerRadii.width + growth, 0.0);
        const double radiusY = std::max(rectangle.cornerRadii.height + growth, 0.0);
        const double cornerX = x - (halfWidth - radiusX);
        const double cornerY = y - (halfHeight - radiusY);
        return cornerX <= 0 || cornerY <= 0 || std::hypot(cornerX / radiusX, cornerY / radiusY) <= 1;
    }
};

// Returns how many of a pixel's 16 samples have ink: the points in the middle of its sixteenths.
int inkedSamples(const Drawing& drawing, int pixels, int column, int row) {
    int inked = 0;
    for (int i = 0; i < 16; ++i) {
        const Point point{(column + (i % 4 + 0.5) / 4) / pixels * drawing.size.width,
                          (1 - (row + (i / 4 + 0.5) / 4) / pixels) * drawing.size.height};
        bool isInked = false;
        for (const Stroke& stroke : drawing.strokes) {
            if (std::visit(Covers{stroke.lineWidth, point}, stroke.shape)) isInked = !stroke.isGap;
        }
        inked += isInked ? 1 : 0;
    }
    return inked;
}

TEST(IconPixmapTest, CountsExactlyTheSamplesThatTheStrokesCover) {
    std::mt19937 random(20'261'123);
    const auto between = [&](double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(random);
    };
    const auto anywhere = [&] { return Point{between(-4, 22), between(-4, 22)}; };
    for (int round = 0; round < 120; ++round) {
        Drawing drawing{.name = "", .size = {18, between(12, 24)}, .strokes = {}};
        const RoundedRectangle rectangle{anywhere(), {between(1, 20), between(1, 20)}, {between(0, 5), between(0, 5)}};
        drawing.strokes = {{rectangle, between(0.1, 6)},
                           {Segment{anywhere(), anywhere()}, between(0.1, 6), true},
                           {Segment{anywhere(), anywhere()}, between(0.1, 6)}};
        const int pixels = 1 + round % 40;
        const Picture picture(drawing, pixels);
        for (int i = 0; i < pixels * pixels; ++i) {
            ASSERT_EQ(picture.alpha(i % pixels, i / pixels),
                      inkedSamples(drawing, pixels, i % pixels, i / pixels) * 255 / 16)
                << "round " << round << ", pixel " << i;
        }
    }
}

// At 18 pixels, one pixel is one point. The first row is the top row.
TEST(IconPixmapTest, DrawsTheLineOfARectangleAndLeavesTheInsideAndTheOutsideEmpty) {
    const Picture picture(frameAndSlash, 18);
    for (const int column : {1, 2}) EXPECT_EQ(picture.alpha(column, 9), 255) << column;  // left side: x from 1 to 3
    for (const int column : {0, 3, 5}) EXPECT_EQ(picture.alpha(column, 9), 0) << column;
    for (const int row : {3, 4}) EXPECT_EQ(picture.alpha(6, row), 255) << row;  // top side: y from 13 to 15
    for (const int row : {2, 5}) EXPECT_EQ(picture.alpha(6, row), 0) << row;
    for (const int row : {13, 14}) EXPECT_EQ(picture.alpha(6, row), 255) << row;  // bottom side: y from 3 to 5
    EXPECT_EQ(picture.alpha(6, 15), 0);
}

TEST(IconPixmapTest, RoundsTheCorners) {
    const Picture picture(frameAndSlash, 18);
    EXPECT_EQ(picture.alpha(1, 3), 0);
    EXPECT_EQ(picture.alpha(16, 14), 0);
    EXPECT_GT(picture.alpha(2, 4), 0);
}

TEST(IconPixmapTest, DrawsASegmentBetweenItsEndsAndNoFurther) {
    const Picture picture(frameAndSlash, 36);
    for (const int column : {17, 18}) {  // x from 8.5 to 9.5 points
        EXPECT_EQ(picture.alpha(column, 20), 255) << column;
        EXPECT_EQ(picture.alpha(column, 17), 0) << column;  // above y = 9 points
    }
    EXPECT_EQ(picture.alpha(16, 20), 0);
    EXPECT_EQ(picture.alpha(19, 20), 0);
}

TEST(IconPixmapTest, CoversAPixelPartlyWhereTheInkDoes) {
    const Drawing half{.name = "", .size = {2, 2}, .strokes = {{Segment{.from = {0, 1}, .to = {2, 1}}, 1}}};
    const Picture picture(half, 2);
    for (const int row : {0, 1}) {
        EXPECT_EQ(picture.alpha(0, row), 127);
    }
}

TEST(IconPixmapTest, LeavesTheRowsBesideAHorizontalLineEmpty) {
    const Drawing line{.name = "", .size = {16, 16}, .strokes = {{Segment{.from = {0, 8}, .to = {16, 8}}, 3.2}}};
    const Picture picture(line, 10);  // 2.5 samples a point
    for (int i = 0; i < 100; ++i) EXPECT_EQ(picture.alpha(i % 10, i / 10), i / 10 == 4 || i / 10 == 5 ? 255 : 0) << i;
}

TEST(IconPixmapTest, AnEmptyDrawingAndASegmentWithoutLengthLeaveNoInk) {
    const Drawing dot{.name = "", .size = {4, 4}, .strokes = {{Segment{.from = {2, 2}, .to = {2, 2}}, 2}}};
    for (const Drawing& drawing : {Drawing{.name = "", .size = {4, 4}, .strokes = {}}, dot}) {
        const Picture picture(drawing, 4);
        for (int i = 0; i < 16; ++i) EXPECT_EQ(picture.alpha(i % 4, i / 4), 0);
    }
}

}  // namespace
}  // namespace kovra
