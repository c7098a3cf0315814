#include "BLE_kovra/platform/linux/ui/style/TextStyle.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QPalette>
#include <map>

#include "tests/platform/linux/ui/QtRig.h"

namespace kovra {
namespace {

const std::map<Font, double> sizes{{Font::standard, 1},       {Font::headline, 1},  {Font::body, 1},
                                   {Font::subheadline, 0.95}, {Font::caption, 0.9}, {Font::caption2, 0.85}};

QFont fontOf(Font font, bool bold = false) { return TextStyle{{font, bold, Color::primary}}.qtFont(); }

TEST(TextStyleTest, ScalesTheDesktopFontByTheRole) {
    const QtRig rig{};
    QFont desktop = QApplication::font();
    desktop.setPointSizeF(20);
    QApplication::setFont(desktop);
    for (const auto& [role, size] : sizes) EXPECT_DOUBLE_EQ(fontOf(role).pointSizeF(), 20 * size) << int(role);
    desktop.setPixelSize(40);
    QApplication::setFont(desktop);
    for (const auto& [role, size] : sizes) EXPECT_EQ(fontOf(role).pixelSize(), int(40 * size)) << int(role);
}

TEST(TextStyleTest, MakesHeadlinesAndBoldTextsBold) {
    const QtRig rig{};
    for (const auto& [role, size] : sizes) {
        EXPECT_EQ(fontOf(role).bold(), role == Font::headline) << int(role);
        EXPECT_TRUE(fontOf(role, true).bold()) << int(role);
    }
}

TEST(TextStyleTest, KeepsTheContrastOfSecondaryTextsInAPaleTheme) {
    QPalette palette;
    palette.setColor(QPalette::Window, Qt::white);
    for (const QColor& pale : {QColor(0x55, 0x55, 0x55), QColor(0x68, 0x68, 0x68)}) {
        palette.setColor(QPalette::WindowText, pale);
        EXPECT_GE(contrast(roleColor(Color::secondary, palette), Qt::white), 4.5) << pale.name().toStdString();
        EXPECT_LT(contrast(roleColor(Color::secondary, palette), Qt::white), contrast(pale, Qt::white) + 0.01);
    }
}

TEST(TextStyleTest, HasAGrayWithoutAnyHue) {
    QPalette palette;
    palette.setColor(QPalette::Window, QColor(0xFD, 0xF6, 0xE3));
    palette.setColor(QPalette::WindowText, QColor(0x20, 0x40, 0x60));
    const QColor gray = roleColor(Color::gray, palette);
    EXPECT_EQ(gray.red(), gray.green());
    EXPECT_EQ(gray.green(), gray.blue());
    EXPECT_NE(roleColor(Color::secondary, palette).red(), roleColor(Color::secondary, palette).blue());
}

}  // namespace
}  // namespace kovra
