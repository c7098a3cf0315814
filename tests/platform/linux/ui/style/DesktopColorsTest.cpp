#include "BLE_kovra/platform/linux/ui/style/DesktopColors.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QTest>
#include <QVariant>

#include "BLE_kovra/platform/linux/ui/style/PortalSettings.h"
#include "tests/platform/linux/ui/QtRig.h"

namespace kovra {
namespace {

// The values of the setting color-scheme.
enum Scheme : unsigned { none, dark, light };

struct DesktopColorsTest : testing::Test {
    void prefer(Scheme scheme) { setting.changed(QVariant(unsigned(scheme))); }
    static QColor paper() { return QApplication::palette().color(QPalette::Window); }
    static QColor darkPaper() { return darkColors().color(QPalette::Window); }

    const QtRig rig{};
    const QColor own = paper();
    DesktopColors colors;
    const PortalSettings::Setting setting = colors.setting();
};

TEST_F(DesktopColorsTest, FollowTheUser) {
    EXPECT_EQ(paper(), own);
    prefer(dark);
    EXPECT_EQ(paper(), darkPaper());
    prefer(light);
    EXPECT_EQ(paper(), own);
    prefer(dark);
    prefer(none);
    EXPECT_EQ(paper(), own);
}

TEST_F(DesktopColorsTest, AreThoseOfTheThemeWhileThatIsDark) {
    const QColor themes(0x10, 0x20, 0x30);
    QApplication::setPalette(QPalette(themes, themes));
    prefer(dark);
    EXPECT_EQ(paper(), themes);
    // The theme may become light again.
    QApplication::setPalette(QPalette(QColor(Qt::white), QColor(Qt::white)));
    EXPECT_TRUE(QTest::qWaitFor([] { return paper() == darkPaper(); }));
}

}  // namespace
}  // namespace kovra
