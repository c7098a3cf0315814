#include "BLE_kovra/platform/linux/ui/tray/DrawingIcon.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>

#include "tests/platform/linux/ui/Luminance.h"
#include "tests/platform/linux/ui/QtRig.h"

namespace kovra {
namespace {

Drawing pad(bool hasSlash) {
    Drawing drawing{.name = "pad", .size = {18, 18}, .strokes = {}};
    drawing.strokes.push_back({RoundedRectangle{.origin = {2.5, 4}, .size = {13, 10}, .cornerRadii = {2, 2}}, 1.2});
    drawing.strokes.push_back({Segment{.from = {9, 4}, .to = {9, 9}}, 1.0});
    if (hasSlash) drawing.strokes.push_back({Segment{.from = {3, 3}, .to = {15, 15}}, 1.6});
    return drawing;
}

const DrawingColors black{};
const DrawingColors outlined{.ink = Qt::white, .outline = QColor(32, 32, 32)};

QImage painted(const Drawing& drawing, const DrawingColors& colors, QSize size, const QColor& background) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(background);
    QPainter painter(&image);
    paintDrawing(painter, QRectF(QPointF(), size), drawing, colors);
    return image;
}

TEST(DrawingIconTest, StandsOutFromAnyBackgroundAtAnySizeIfItIsOutlined) {
    for (const QColor& background : {QColor(Qt::white), QColor(0xE6, 0xE6, 0xE6), QColor(0x80, 0x80, 0x80),
                                     QColor(0x2D, 0x2D, 0x2D), QColor(Qt::black)}) {
        for (const int side : {16, 18, 22, 24, 27, 32, 33, 36, 44, 48}) {
            const QImage image = painted(pad(false), outlined, {side, side}, background);
            EXPECT_GT(standingOut(image, background), 0.08) << side << " pixels on " << background.name().toStdString();
        }
    }
}

TEST(DrawingIconTest, ShowsTheSlash) {
    for (const QColor& background : {QColor(Qt::white), QColor(Qt::black)}) {
        const QImage plain = painted(pad(false), outlined, {22, 22}, background);
        const QImage slashed = painted(pad(true), outlined, {22, 22}, background);
        int differing = 0;
        for (int at = 0; at < 22; ++at) differing += plain.pixel(at, 21 - at) != slashed.pixel(at, 21 - at) ? 1 : 0;
        EXPECT_GE(differing, 10);
    }
}

TEST(DrawingIconTest, IsDrawnUpright) {
    // The short line rises from the bottom edge to the middle.
    const QImage image = painted(pad(false), black, {180, 180}, Qt::white);
    EXPECT_EQ(image.pixelColor(90, 120), QColor(Qt::black));
    EXPECT_EQ(image.pixelColor(90, 70), QColor(Qt::white));
}

TEST(DrawingIconTest, KeepsItsProportionsInARectangleThatIsNotSquare) {
    const QImage square = painted(pad(true), outlined, {22, 22}, Qt::gray);
    EXPECT_EQ(painted(pad(true), outlined, {22, 30}, Qt::gray).copy(0, 4, 22, 22), square);
    EXPECT_EQ(painted(pad(true), outlined, {30, 22}, Qt::gray).copy(4, 0, 22, 22), square);
}

TEST(DrawingIconTest, IsRepaintedForEachSize) {
    // If the icon is drawn for this size, its edges are one pixel wide. Few pixels are then neither black nor white.
    const QImage image = painted(pad(false), black, {180, 180}, Qt::white);
    int between = 0;
    for (int y = 0; y < 180; ++y) {
        for (int x = 0; x < 180; ++x) {
            const int gray = qGray(image.pixel(x, y));
            if (gray > 0 && gray < 255) ++between;
        }
    }
    EXPECT_LT(between, 400);
}

TEST(DrawingIconTest, PaintsADrawingWithoutColorsInBlack) {
    EXPECT_EQ(painted(pad(true), black, {36, 36}, Qt::black), painted(Drawing(), black, {36, 36}, Qt::black));
}

TEST(DrawingIconTest, PaintsNothingForADrawingWithoutASize) {
    Drawing drawing = pad(true);
    for (const Size size : {Size{0, 0}, Size{18, 0}, Size{-18, 18}}) {
        drawing.size = size;
        EXPECT_EQ(painted(drawing, outlined, {22, 22}, Qt::white), painted(Drawing(), outlined, {22, 22}, Qt::white));
    }
}

TEST(DrawingIconTest, HasOnlyItsInkIfItHasNoOutline) {
    const QImage image = painted(pad(true), {.ink = QColor(0, 0, 255)}, {180, 180}, Qt::white);
    for (int i = 0; i < 180; ++i) EXPECT_EQ(image.pixelColor(i, 100).blue(), 255);
    EXPECT_EQ(image.pixelColor(90, 120), QColor(0, 0, 255));
}

TEST(DrawingIconTest, LeavesAGapInTheStrokesBeforeItButNotInThoseAfterIt) {
    const Segment across{.from = {0, 9}, .to = {18, 9}};
    Drawing drawing = pad(false);
    drawing.strokes.push_back({across, 4, true});
    drawing.strokes.push_back({across, 2});
    const QImage image = painted(drawing, black, {180, 180}, Qt::white);
    EXPECT_EQ(image.pixelColor(25, 65), QColor(Qt::black));  // the frame above the gap
    EXPECT_EQ(image.pixelColor(25, 75), QColor(Qt::white));  // the gap
    EXPECT_EQ(image.pixelColor(25, 90), QColor(Qt::black));  // the line in the gap
}

TEST(DrawingIconTest, PaintsTheGlyphForItsNumberOfPixels) {
    Drawing drawing = pad(false);
    drawing.glyphs.push_back({.pixels = 16, .strokes = {{Segment{.from = {0, 8}, .to = {16, 8}}, 2}}});
    const QImage image = painted(drawing, black, {16, 16}, Qt::white);
    for (int row = 0; row < 16; ++row)
        EXPECT_EQ(image.pixelColor(5, row), QColor(row == 7 || row == 8 ? Qt::black : Qt::white)) << row;
}

TEST(DrawingIconTest, PaintsTheSamePictureAsAnIcon) {
    const QtRig rig{};
    const QIcon icon = drawingIcon(pad(true), outlined);
    QImage image(22, 22, QImage::Format_RGB32);
    image.fill(Qt::gray);
    QPainter painter(&image);
    icon.paint(&painter, QRect(0, 0, 22, 22));
    painter.end();
    EXPECT_EQ(image, painted(pad(true), outlined, {22, 22}, Qt::gray));
}

}  // namespace
}  // namespace kovra
