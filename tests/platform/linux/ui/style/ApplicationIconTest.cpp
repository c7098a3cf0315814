#include "BLE_kovra/platform/linux/ui/style/ApplicationIcon.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <algorithm>
#include <cmath>

#include "tests/platform/linux/ui/Luminance.h"
#include "tests/platform/linux/ui/QtRig.h"

namespace kovra {
namespace {

QImage painted(QSize size, const QColor& background) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(background);
    QPainter painter(&image);
    paintPicture(painter, QRectF(QPointF(), size), applicationIcon());
    return image;
}

TEST(ApplicationIconTest, StandsOutFromLightAndDarkBackgrounds) {
    for (const QColor& background : {QColor(Qt::white), QColor(0xE6, 0xE6, 0xE6), QColor(0x2D, 0x2D, 0x2D)}) {
        for (const int side : {16, 22, 24, 32, 48, 64, 128, 256}) {
            const QImage image = painted({side, side}, background);
            EXPECT_GT(standingOut(image, background), 0.4) << side << " pixels on " << background.name().toStdString();
        }
    }
}

TEST(ApplicationIconTest, IsDrawnUpright) {
    const QImage image = painted({180, 180}, Qt::gray);
    const auto colorAt = [&](double x, double y) { return image.pixelColor(int(x * 10), 180 - int(y * 10)); };
    EXPECT_EQ(colorAt(1, 9), QColor(0x3A, 0x7B, 0xE0));  // the tile
    EXPECT_EQ(colorAt(4, 12.5), QColor(Qt::white));      // the pad
    EXPECT_EQ(colorAt(9, 5), QColor(0x3A, 0x7B, 0xE0));  // the line between its buttons
    EXPECT_EQ(colorAt(12.5, 5), QColor(Qt::white));      // beside that line
    EXPECT_EQ(colorAt(5, 5), QColor(0xFF, 0xB3, 0x00));  // the slash
    EXPECT_EQ(colorAt(13, 13), QColor(0xFF, 0xB3, 0x00));
    EXPECT_EQ(image.pixelColor(0, 0), QColor(Qt::gray));  // outside the round corner
}

TEST(ApplicationIconTest, KeepsItsProportionsInARectangleThatIsNotSquare) {
    const QImage square = painted({32, 32}, Qt::gray);
    EXPECT_EQ(painted({32, 40}, Qt::gray).copy(0, 4, 32, 32), square);
    EXPECT_EQ(painted({40, 32}, Qt::gray).copy(4, 0, 32, 32), square);
}

TEST(ApplicationIconTest, PaintsTheSamePictureAsAnIcon) {
    const QtRig rig{};
    QImage image(48, 48, QImage::Format_RGB32);
    image.fill(Qt::gray);
    QPainter painter(&image);
    windowIcon().paint(&painter, QRect(0, 0, 48, 48));
    painter.end();
    EXPECT_EQ(image, painted({48, 48}, Qt::gray));
}

}  // namespace
}  // namespace kovra
