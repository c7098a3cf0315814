#include "BLE_kovra/platform/linux/ui/style/Paragraph.h"

#include <gtest/gtest.h>

#include <QFontMetrics>
#include <QImage>
#include <QPainter>

#include "tests/platform/linux/ui/QtRig.h"

namespace kovra {
namespace {

class ParagraphTest : public testing::Test {
  protected:
    ParagraphTest() { font_.setPixelSize(40); }

    const QtRig qt_{};
    QFont font_ = QApplication::font();
    Paragraph paragraph_;
};

TEST_F(ParagraphTest, MayBecomeAsNarrowAsSixAverageLetters) {
    EXPECT_TRUE(paragraph_.set("The trackpad is muted", font_));
    EXPECT_EQ(paragraph_.minimumWidth(), 6 * QFontMetrics(font_).averageCharWidth());
    EXPECT_FALSE(paragraph_.set("The trackpad is muted", font_)) << "a text that stays is laid out again";
    EXPECT_TRUE(paragraph_.set("on", font_));
    EXPECT_EQ(paragraph_.minimumWidth(), paragraph_.preferredWidth()) << "a short text is never wrapped";
}

TEST_F(ParagraphTest, IsPaintedInItsColorAtItsPlace) {
    const auto painted = [](const auto& paint) {
        QImage image(200, 100, QImage::Format_RGB32);
        image.fill(Qt::white);
        QPainter painter(&image);
        paint(painter);
        return image;
    };
    EXPECT_TRUE(paragraph_.set("muted", font_));
    const QImage expected = painted([&](QPainter& painter) {
        painter.setFont(font_);
        painter.setPen(Qt::darkGreen);
        painter.drawText(QPoint(10, 20 + QFontMetrics(font_).ascent()), "muted");
    });
    EXPECT_EQ(painted([&](QPainter& painter) { paragraph_.paint(painter, {10, 20, 180, 80}, Qt::darkGreen); }),
              expected);
}

}  // namespace
}  // namespace kovra
