#include "BLE_kovra/platform/linux/ui/style/TextSize.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QFont>
#include <QVariant>
#include <limits>

#include "BLE_kovra/platform/linux/ui/style/PortalSettings.h"
#include "tests/platform/linux/ui/QtRig.h"
#include "tests/support/Environment.h"

namespace kovra {
namespace {

struct TextSizeTest : testing::Test {
    TextSizeTest() { QApplication::setFont(QFont("Cantarell", 11)); }

    const QtRig rig{};
};

TEST_F(TextSizeTest, FollowsTheUsersFactor) {
    TextSize size(true);
    const PortalSettings::Setting setting = size.setting();
    setting.changed(1.25);
    EXPECT_EQ(QApplication::font().pointSizeF(), 13.75);
    EXPECT_EQ(QApplication::font().family(), "Cantarell");
    setting.changed(2.0);
    EXPECT_EQ(QApplication::font().pointSizeF(), 22);
    setting.changed(1.0);
    EXPECT_EQ(QApplication::font().pointSizeF(), 11);
}

TEST_F(TextSizeTest, IsThatOfTheThemeIfTheFactorIsOutOfRange) {
    TextSize size(true);
    const PortalSettings::Setting setting = size.setting();
    for (const double factor : {0.0, 0.49, 3.01, -1.0, std::numeric_limits<double>::quiet_NaN()})
        setting.changed(factor);
    setting.changed("large");
    EXPECT_EQ(QApplication::font().pointSizeF(), 11);
}

TEST_F(TextSizeTest, FollowsTheUsersFactorForAFontInPixels) {
    QFont font = QApplication::font();
    font.setPixelSize(14);
    QApplication::setFont(font);
    TextSize(true).setting().changed(1.5);
    EXPECT_EQ(QApplication::font().pixelSize(), 21);
}

// On X11 the resolution contains the factor.
TEST_F(TextSizeTest, IsThatOfTheToolkitIfItKnowsTheFactor) {
    TextSize(false).setting().changed(1.25);
    EXPECT_EQ(QApplication::font().pointSizeF(), 11);
    Environment environment;
    environment.set("XDG_CURRENT_DESKTOP", "GNOME");
    EXPECT_FALSE(TextSize::isUnknownToToolkit());
}

}  // namespace
}  // namespace kovra
