#include "BLE_kovra/platform/linux/tray/IconPixmap.h"

#include <gtest/gtest.h>

#include <string>

namespace kovra {
namespace {

const Drawing frameAndSlash{
    .name = "test",
    .size = {18, 18},
    .strokes = {{RoundedRectangle{.origin = {2, 4}, .size = {14, 10}, .cornerRadii = {3, 3}}, 2},
                {Segment{.from = {9, 4}, .to = {9, 9}}, 1}}};

struct Picture {
    Picture(const Drawing& drawing, int side) : pixels(side), bytes(argbPixmap(drawing, side)) {}

    int alpha(int column, int row) const { return bytes.at(static_cast<std::size_t>(row * pixels + column) * 4); }

    int pixels;
    std::vector<std::uint8_t> bytes;
};

TEST(IconPixmapTest, HasFourBytesForEachPixel) {
    for (const int pixels : {1, 16, 22, 48}) {
        EXPECT_EQ(argbPixmap(frameAndSlash, pixels).size(), static_cast<std::size_t>(pixels * pixels * 4));
    }
}

TEST(IconPixmapTest, IsTheSameGrayEverywhereAndShowsInkOnlyInItsAlpha) {
    const Picture picture(frameAndSlash, 36);
    for (std::size_t at = 0; at < picture.bytes.size(); at += 4) {
        ASSERT_EQ(picture.bytes[at + 1], 0x80);
        ASSERT_EQ(picture.bytes[at + 2], 0x80);
        ASSERT_EQ(picture.bytes[at + 3], 0x80);
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

TEST(IconPixmapTest, AnEmptyDrawingAndASegmentWithoutLengthLeaveNoInk) {
    const Drawing dot{.name = "", .size = {4, 4}, .strokes = {{Segment{.from = {2, 2}, .to = {2, 2}}, 2}}};
    for (const Drawing& drawing : {Drawing{.name = "", .size = {4, 4}, .strokes = {}}, dot}) {
        const Picture picture(drawing, 4);
        for (int i = 0; i < 16; ++i) EXPECT_EQ(picture.alpha(i % 4, i / 4), 0);
    }
}

}  // namespace
}  // namespace kovra
