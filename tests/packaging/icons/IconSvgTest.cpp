#include "packaging/icons/IconSvg.h"

#include <gtest/gtest.h>

#include <locale>
#include <string>
#include <string_view>

namespace kovra {
namespace {

const Drawing frameAndLine{
    .name = "test",
    .size = {18, 18},
    .strokes = {{RoundedRectangle{.origin = {2.5, 4}, .size = {13, 10}, .cornerRadii = {2, 2}}, 1.2},
                {Segment{.from = {9, 4}, .to = {9, 9}}, 1}}};

int count(std::string_view what, std::string_view svg) {
    int found = 0;
    for (auto at = svg.find(what); at != std::string_view::npos; at = svg.find(what, at + 1)) ++found;
    return found;
}

TEST(IconSvgTest, IsTheOutlineOfEachStrokeInTheColorThatAPanelReplaces) {
    const Drawing edged{.name = "test",
                        .size = {10, 10},
                        .strokes = {{RoundedRectangle{.origin = {2, 3}, .size = {6, 5}, .cornerRadii = {0, 0}}, 0},
                                    {Segment{.from = {5, 3}, .to = {5, 6}}, 1}}};
    EXPECT_EQ(iconSvg(edged, IconLook::recolored),
              R"(<svg xmlns="http://www.w3.org/2000/svg" width="10" height="10" viewBox="0 0 10 10">
  <style id="current-color-scheme" type="text/css">.ColorScheme-Text { color: #808080; }</style>
  <path class="ColorScheme-Text" fill="currentColor" fill-rule="evenodd" d="M8 2L2 2L2 7L8 7ZM8 2L2 2L2 7L8 7Z"/>
  <path class="ColorScheme-Text" fill="currentColor" fill-rule="evenodd" d="M5.5 7L5.5 4L4.5 4L4.5 7Z"/>
</svg>
)");
}

TEST(IconSvgTest, RoundsTheOuterAndTheInnerEdgeOfALine) {
    const std::string svg = iconSvg(frameAndLine, IconLook::recolored);
    EXPECT_EQ(count("Z", svg), 3) << svg;
    for (const char* corner :
         {"M16.1 6L", "L13.5 3.4L", "L4.5 3.4L", "L1.9 6L", "L1.9 12L", "L4.5 14.6L", "L13.5 14.6L", "L16.1 12Z",
          "M14.9 6L", "L13.5 4.6L", "L4.5 4.6L", "L3.1 6L", "L3.1 12L", "L4.5 13.4L", "L13.5 13.4L", "L14.9 12Z"}) {
        EXPECT_EQ(count(corner, svg), 1) << corner << svg;
    }
    EXPECT_EQ(count("L15.34 4.162L", svg), 1) << svg;  // the middle of the top right corner: 2.6 points from its centre
}

// A build in a locale with a decimal comma must create the same icon file.
TEST(IconSvgTest, DoesNotDependOnTheLocale) {
    const std::string before = iconSvg(frameAndLine, IconLook::outlinedDark);
    struct Comma : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
    };
    const std::locale old = std::locale::global(std::locale(std::locale::classic(), new Comma));
    const std::string after = iconSvg(frameAndLine, IconLook::outlinedDark);
    std::locale::global(old);
    EXPECT_EQ(after, before);
}

TEST(IconSvgTest, HasNoStrokesBecausePanelsReplaceOnlyFills) {
    for (const IconLook look : {IconLook::recolored, IconLook::onLight, IconLook::onDark})
        EXPECT_EQ(iconSvg(frameAndLine, look).find("stroke"), std::string::npos);
}

TEST(IconSvgTest, HasTheInkOfItsLookForPanelsThatDoNotReplaceIt) {
    EXPECT_NE(iconSvg(frameAndLine, IconLook::onLight).find("color: #202020;"), std::string::npos);
    EXPECT_NE(iconSvg(frameAndLine, IconLook::onDark).find("color: #ffffff;"), std::string::npos);
}

TEST(IconSvgTest, HasTheOutlineOfItsLookBehindTheInk) {
    const Drawing line{.name = "line", .size = {10, 10}, .strokes = {{Segment{.from = {2, 5}, .to = {8, 5}}, 2}}};
    EXPECT_EQ(iconSvg(line, IconLook::outlinedLight),
              R"(<svg xmlns="http://www.w3.org/2000/svg" width="10" height="10" viewBox="0 0 10 10">
  <path fill="#202020" stroke="#202020" stroke-width="0.9" stroke-linejoin="round" fill-rule="evenodd" d="M2 6L8 6L8 4L2 4Z"/>
  <path fill="#ffffff" fill-rule="evenodd" d="M2 6L8 6L8 4L2 4Z"/>
</svg>
)");
}

TEST(IconSvgTest, WritesAGapAsWhatItLeavesOfTheStrokesBeforeIt) {
    const Drawing drawing{.name = "gap",
                          .size = {10, 10},
                          .strokes = {{Segment{.from = {1, 5}, .to = {9, 5}}, 2},
                                      {Segment{.from = {5, 0}, .to = {5, 10}}, 2, true},
                                      {Segment{.from = {5, 1}, .to = {5, 9}}, 1}}};
    const std::string path = "  <path class=\"ColorScheme-Text\" fill=\"currentColor\" fill-rule=\"evenodd\" d=\"";
    const std::string svg = iconSvg(drawing, IconLook::recolored);
    EXPECT_NE(svg.find(path + "M4 4L1 4L1 6L4 6Z\"/>\n" + path + "M6 6L9 6L9 4L6 4Z\"/>\n" + path +
                       "M5.5 9L5.5 1L4.5 1L4.5 9Z\"/>\n"),
              std::string::npos)
        << svg;
}

TEST(IconSvgTest, LeavesBothSidesOfAFrameThatAGapDivides) {
    const Drawing drawing{.name = "gap",
                          .size = {10, 10},
                          .strokes = {{RoundedRectangle{.origin = {2, 2}, .size = {6, 6}, .cornerRadii = {0, 0}}, 2},
                                      {Segment{.from = {-5, 5}, .to = {15, 5}}, 2, true}}};
    const std::string svg = iconSvg(drawing, IconLook::recolored);
    // Each side is one contour around its half of the hole.
    EXPECT_EQ(count("<path", svg), 2) << svg;
    EXPECT_EQ(count("Z", svg), 2) << svg;
    EXPECT_NE(svg.find("1 4"), std::string::npos) << svg;
    EXPECT_NE(svg.find("3 4"), std::string::npos) << svg;
}

TEST(IconSvgTest, OfAPictureHasItsColors) {
    const ColoredPicture picture{
        .size = {18, 18},
        .layers = {{0x00A0FF, RoundedRectangle{.origin = {2.5, 3}, .size = {13, 10}, .cornerRadii = {2, 1}}},
                   {0xFFB300, Segment{.from = {9, 4}, .to = {10, 9}}, 1.5}}};
    EXPECT_EQ(iconSvg(picture), R"(<svg xmlns="http://www.w3.org/2000/svg" width="18" height="18" viewBox="0 0 18 18">
  <rect fill="#00a0ff" x="2.5" y="5" width="13" height="10" rx="2" ry="1"/>
  <path stroke="#ffb300" stroke-width="1.5" stroke-linecap="round" d="M9 14L10 9"/>
</svg>
)");
}

}  // namespace
}  // namespace kovra
