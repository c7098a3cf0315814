#include "packaging/icons/IconSvg.h"

#include <gtest/gtest.h>

#include <locale>

namespace kovra {
namespace {

const Drawing frameAndLine{
    .name = "test",
    .size = {18, 18},
    .strokes = {{RoundedRectangle{.origin = {2.5, 4}, .size = {13, 10}, .cornerRadii = {2, 2}}, 1.2},
                {Segment{.from = {9, 4}, .to = {9, 9}}, 1}}};

TEST(IconSvgTest, IsTheOutlineOfEachStrokeInTheColorThatAPanelReplaces) {
    EXPECT_EQ(iconSvg(frameAndLine),
              R"(<svg xmlns="http://www.w3.org/2000/svg" width="18" height="18" viewBox="0 0 18 18">
  <style id="current-color-scheme" type="text/css">.ColorScheme-Text { color: #808080; }</style>
  <path class="ColorScheme-Text" fill="currentColor" fill-rule="evenodd" d=")"
              "M4.5 3.4L13.5 3.4A2.6 2.6 0 0 1 16.1 6L16.1 12A2.6 2.6 0 0 1 13.5 14.6"
              "L4.5 14.6A2.6 2.6 0 0 1 1.9 12L1.9 6A2.6 2.6 0 0 1 4.5 3.4Z"
              "M4.5 4.6L13.5 4.6A1.4 1.4 0 0 1 14.9 6L14.9 12A1.4 1.4 0 0 1 13.5 13.4"
              "L4.5 13.4A1.4 1.4 0 0 1 3.1 12L3.1 6A1.4 1.4 0 0 1 4.5 4.6Z"
              R"("/>
  <path class="ColorScheme-Text" fill="currentColor" fill-rule="evenodd" d="M8.5 14L8.5 9L9.5 9L9.5 14Z"/>
</svg>
)");
}

// A build in a locale with a decimal comma must create the same icon file.
TEST(IconSvgTest, DoesNotDependOnTheLocale) {
    const std::string before = iconSvg(frameAndLine);
    struct Comma : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
    };
    const std::locale old = std::locale::global(std::locale(std::locale::classic(), new Comma));
    const std::string after = iconSvg(frameAndLine);
    std::locale::global(old);
    EXPECT_EQ(after, before);
}

TEST(IconSvgTest, HasNoStrokesBecausePanelsReplaceOnlyFills) {
    EXPECT_EQ(iconSvg(frameAndLine).find("stroke"), std::string::npos);
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
