#include "BLE_kovra/app/StatusIcon.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <variant>

#include "BLE_kovra/platform/ApplicationIcon.h"
#include "tests/support/Dump.h"

namespace kovra {
namespace {

TEST(StatusIconTest, IsATrackpadWithTheLineBetweenItsButtons) {
    EXPECT_EQ(dump(makeIcon(false)), R"(ble-kovra-symbolic 18x18
rounded rectangle at 2.5,4 of 13x10 radii 2,2 width 1.2
segment 9,4 to 9,9 width 1
)");
}

TEST(StatusIconTest, HasASlashOnTopWhileMuted) {
    EXPECT_EQ(dump(makeIcon(true)), R"(ble-kovra-muted-symbolic 18x18
rounded rectangle at 2.5,4 of 13x10 radii 2,2 width 1.2
segment 9,4 to 9,9 width 1
segment 3,3 to 15,15 width 1.6
)");
}

TEST(StatusIconTest, IsDrawnByAGlyphThatTheNumberOfPixelsFits) {
    const auto sideFor = [](int pixels) { return fittedTo(pixels, makeIcon(true)).size.width; };
    for (const int pixels : {16, 22, 24}) EXPECT_EQ(sideFor(pixels), pixels);
    for (const int pixels : {1, 15}) EXPECT_EQ(sideFor(pixels), 16) << pixels;
    for (const int pixels : {17, 21}) EXPECT_EQ(sideFor(pixels), 22) << pixels;
    for (const int pixels : {23, 25, 32, 48, 100}) EXPECT_EQ(sideFor(pixels), 24) << pixels;
    const Drawing withoutGlyphs{.name = "plain", .size = {18, 18}, .strokes = {}};
    EXPECT_EQ(fittedTo(16, withoutGlyphs), withoutGlyphs);
}

TEST(StatusIconTest, HasGlyphsInTheMiddleOfTheirPixels) {
    for (const Glyph& glyph : makeIcon(true).glyphs) {
        const double side = glyph.pixels;
        const auto& pad = std::get<RoundedRectangle>(glyph.strokes[0].shape);
        const double line = glyph.strokes[0].lineWidth;
        EXPECT_EQ(2 * pad.origin.x + pad.size.width, side);
        EXPECT_EQ(2 * pad.origin.y + pad.size.height, side);
        EXPECT_EQ(pad.cornerRadii, (Size{1 + line / 2, 1 + line / 2})) << "a radius of one pixel inside the line";
        const auto& divider = std::get<Segment>(glyph.strokes[1].shape);
        EXPECT_EQ(divider.from, (Point{side / 2, pad.origin.y + line / 2})) << side;
        EXPECT_EQ(divider.to.x, side / 2);
        EXPECT_NEAR(divider.to.y, side / 2, 1);
        const auto& slash = std::get<Segment>(glyph.strokes[3].shape);
        EXPECT_EQ(slash.from, (Point{slash.from.x, slash.from.x})) << side;
        EXPECT_EQ(slash.to, (Point{side - slash.from.x, side - slash.from.x})) << side;
    }
}

// Icons of both sizes are equally large beside others.
TEST(StatusIconTest, HasAGlyphFor24PixelsThatIsTheOneFor22WithAMargin) {
    const auto glyphs = makeIcon(true).glyphs;
    const auto moved = [](Segment line) {
        for (double* each : {&line.from.x, &line.from.y, &line.to.x, &line.to.y}) ++*each;
        return line;
    };
    auto pad = std::get<RoundedRectangle>(glyphs[1].strokes[0].shape);
    ++pad.origin.x;
    ++pad.origin.y;
    EXPECT_EQ(std::get<RoundedRectangle>(glyphs[2].strokes[0].shape), pad);
    for (const std::size_t line : {1U, 3U}) {
        EXPECT_EQ(std::get<Segment>(glyphs[2].strokes[line].shape),
                  moved(std::get<Segment>(glyphs[1].strokes[line].shape)));
    }
    for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(glyphs[2].strokes[i].lineWidth, glyphs[1].strokes[i].lineWidth);
}

// The edges of the lines that are not diagonal are the edges of pixels.
TEST(StatusIconTest, HasGlyphsWhoseLinesLieOnWholePixels) {
    const auto isWhole = [](double value) { return value == static_cast<int>(value); };
    for (const Glyph& glyph : makeIcon(false).glyphs) {
        ASSERT_EQ(glyph.strokes.size(), 2U);
        const auto& pad = std::get<RoundedRectangle>(glyph.strokes[0].shape);
        for (const double side : {-glyph.strokes[0].lineWidth / 2, glyph.strokes[0].lineWidth / 2}) {
            EXPECT_TRUE(isWhole(pad.origin.x + side) && isWhole(pad.origin.y + side)) << glyph.pixels;
            EXPECT_TRUE(isWhole(pad.size.width + 2 * side) && isWhole(pad.size.height + 2 * side)) << glyph.pixels;
        }
        const auto& divider = std::get<Segment>(glyph.strokes[1].shape);
        EXPECT_TRUE(isWhole(divider.from.x - glyph.strokes[1].lineWidth / 2)) << glyph.pixels;
        EXPECT_TRUE(isWhole(glyph.strokes[1].lineWidth)) << glyph.pixels;
        for (const double y : {divider.from.y, divider.to.y}) EXPECT_TRUE(isWhole(y)) << glyph.pixels;
    }
}

TEST(StatusIconTest, HasGlyphsWhoseSlashIsTheThickestLineInAGapOfAPixelOnEachSide) {
    const auto plain = makeIcon(false).glyphs;
    const auto slashed = makeIcon(true).glyphs;
    ASSERT_EQ(slashed.size(), plain.size());
    for (std::size_t i = 0; i < plain.size(); ++i) {
        ASSERT_EQ(slashed[i].strokes.size(), 4U);
        EXPECT_TRUE(std::equal(plain[i].strokes.begin(), plain[i].strokes.end(), slashed[i].strokes.begin()));
        const Stroke& gap = slashed[i].strokes[2];
        const Stroke& slash = slashed[i].strokes[3];
        EXPECT_TRUE(gap.isGap && !slash.isGap);
        EXPECT_GE(gap.lineWidth, slash.lineWidth + 2);
        EXPECT_LE(gap.lineWidth, slash.lineWidth + 3);
        EXPECT_GE(slash.lineWidth, slashed[i].strokes[0].lineWidth);
        EXPECT_LT(slash.lineWidth, 3);
        const auto& line = std::get<Segment>(slash.shape);
        EXPECT_LT(line.from.x, line.to.x);
        EXPECT_LT(line.from.y, line.to.y);
    }
}

// Only the glyphs have gaps, since not every bar can draw one.
TEST(StatusIconTest, HasNoGapOutsideItsGlyphs) {
    for (const Stroke& stroke : makeIcon(true).strokes) EXPECT_FALSE(stroke.isGap);
}

TEST(StatusIconTest, MatchesTheApplicationIcon) {
    const auto layers = applicationIcon().layers;
    for (const Stroke& stroke : makeIcon(true).strokes) {
        EXPECT_TRUE(std::any_of(layers.begin(), layers.end(), [&](const auto& layer) {
            return layer.shape == stroke.shape && (layer.lineWidth == 0 || layer.lineWidth >= stroke.lineWidth);
        }));
    }
    EXPECT_EQ(applicationIcon().size, makeIcon(true).size);
}

}  // namespace
}  // namespace kovra
