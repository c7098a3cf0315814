#include "BLE_kovra/platform/macos/views/ViewWidth.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace kovra {
namespace {

View text() { return {Text{"a"}, {}, {}, {}}; }
View spacer() { return {Spacer{}, {}, {}, {}}; }
View stack(std::vector<View> children) { return {Stack{}, std::move(children), {}, {}}; }

TEST(ViewWidthTest, IsTakenByKindsWithoutAWidthOfTheirOwn) {
    EXPECT_TRUE(takesWidth({Divider{}, {}, {}, {}}));
    EXPECT_TRUE(takesWidth({Circle{}, {}, {}, {}}));
    EXPECT_TRUE(takesWidth({ScrollView{}, {}, {}, {}}));
    EXPECT_TRUE(takesWidth(spacer()));
    EXPECT_FALSE(takesWidth(text()));
    EXPECT_FALSE(takesWidth({Picker{}, {}, {}, {}}));
    EXPECT_FALSE(takesWidth({Link{}, {}, {}, {}}));
}

TEST(ViewWidthTest, IsTakenByAParentOfAViewThatTakesIt) {
    EXPECT_FALSE(takesWidth(stack({text(), text()})));
    EXPECT_TRUE(takesWidth(stack({text(), stack({spacer(), text()})})));
    EXPECT_TRUE(takesWidth({Toggle{}, {stack({text(), spacer()})}, {}, {}}));
    EXPECT_FALSE(takesWidth({Toggle{}, {text()}, {}, {}}));
}

TEST(ViewWidthTest, FollowsTheOutermostModifier) {
    EXPECT_FALSE(takesWidth(View{Circle{}, {}, {}, {}}.frame({.width = 8, .height = 8})));
    EXPECT_TRUE(takesWidth(text().frame({.maxWidth = Frame::unbounded})));
    EXPECT_TRUE(takesWidth(text().frame({.maxWidth = Frame::unbounded}).verticalPadding(16)));
    EXPECT_TRUE(takesWidth(View{ScrollView{}, {}, {}, {}}.frame({.maxHeight = 200})));
    EXPECT_FALSE(takesWidth(spacer().fixedSize(true, false)));
    EXPECT_TRUE(takesWidth(spacer().fixedSize(false, true)));
}

TEST(ViewWidthTest, CountsOnlyTheRequestedModifiers) {
    const View dot = View{Circle{}, {}, {}, {}}.frame({.width = 8});
    EXPECT_TRUE(takesWidth(dot, 0));
    EXPECT_FALSE(takesWidth(dot, 1));
}

TEST(ViewWidthTest, InsideRemainsAfterFrameAndPadding) {
    EXPECT_EQ(widthInside(stack({}).padding(20).frame({.width = 440}), std::nullopt), 400);
    EXPECT_EQ(widthInside(stack({}).frame({.width = 440}).padding(20), std::nullopt), 440);
    EXPECT_EQ(widthInside(text().frame({.maxWidth = Frame::unbounded}), 400), 400);
    EXPECT_EQ(widthInside(text().frame({.maxWidth = 100}), 400), 100);
    EXPECT_EQ(widthInside(text().padding(300), 400), 0);
    EXPECT_EQ(widthInside(text().padding(4), std::nullopt), std::nullopt);
}

}  // namespace
}  // namespace kovra
