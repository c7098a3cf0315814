// Tests of the settings window's geometry at several font sizes. They compare it with the lengths in the window's view.

#include <gtest/gtest.h>

#include <QFont>
#include <QImage>
#include <QRadioButton>
#include <cmath>
#include <ostream>

#include "BLE_kovra/platform/linux/ui/elements/TextElement.h"
#include "tests/platform/linux/ui/ViewRig.h"

namespace kovra {
namespace {

// The size of the desktop's font in points, and the resulting scale.
struct FontSize {
    double size;
    double scale;
};
void PrintTo(const FontSize& font, std::ostream* out) { *out << font.size << " points"; }

class ElementTreeGeometryTest : public testing::TestWithParam<FontSize> {
    struct WithFont {
        explicit WithFont(double size) {
            QFont changed = QApplication::font();
            changed.setPointSizeF(size);
            QApplication::setFont(changed);
        }
    };

  protected:
    int scaled(double points) const { return static_cast<int>(std::lround(points * GetParam().scale)); }
    static int gap(const QRect& above, const QRect& below) { return below.top() - above.bottom() - 1; }

    QRect placeOfMode() const {
        return rig.place(*rig.button(content.texts.always)) | rig.place(*rig.button(content.texts.onDevice)) |
               rig.place(content.texts.mode);
    }
    // Returns the bounding rectangle of all pixels in an area that differ from the background.
    QRect painted(const QRect& in) {
        const QImage image = rig.surface.grab().toImage();
        QRect found;
        for (int y = in.top(); y <= in.bottom(); ++y) {
            for (int x = in.left(); x <= in.right(); ++x) {
                if (image.pixel(x, y) != image.pixel(0, 0)) found |= QRect(x, y, 1, 1);
            }
        }
        return found;
    }

    const QtRig qt{};
    const WithFont font{GetParam().size};
    ViewRig rig;
    sample::Content content;
};

TEST_P(ElementTreeGeometryTest, ScalesWithTheFont) {
    EXPECT_NEAR(fontScale(), GetParam().scale, 0.001);
    EXPECT_EQ(rig.surface.size(), QSize(scaled(440), scaled(480)));
}

TEST_P(ElementTreeGeometryTest, LeavesTwentyPointsAtTheSides) {
    content.devices = sample::mice(3);
    rig.show(content);
    const int left = scaled(20);
    const int right = scaled(440) - scaled(20);
    EXPECT_EQ(rig.place(content.texts.title).left(), left);
    EXPECT_EQ(rig.place(*rig.button(content.texts.block)).left(), left);
    EXPECT_EQ(rig.place(content.texts.mode).left(), left);
    EXPECT_EQ(rig.place(content.texts.hint).left(), left);
    EXPECT_LE(rig.place(content.texts.hint).right(), right);
    EXPECT_EQ(rig.placeOfList().left(), left);
    EXPECT_EQ(rig.placeOfList().right() + 1, right);
    EXPECT_EQ(rig.place(*rig.button("Mouse 0")).right() + 1, right);
}

TEST_P(ElementTreeGeometryTest, IsCenteredWithAtLeastTwentyPointsAboveAndBelow) {
    for (const int count : {0, 1, 100}) {
        content.devices = sample::mice(count);
        rig.show(content);
        const int above = rig.place(content.texts.title).top();
        const int below = rig.surface.height() - 1 - rig.place(content.texts.developedBy).bottom();
        EXPECT_NEAR(above, below, 1) << count;
        EXPECT_GE(above, scaled(20)) << count;
    }
}

TEST_P(ElementTreeGeometryTest, LeavesFourteenPointsBetweenTheParts) {
    content.devices = sample::mice(2);
    rig.show(content);
    const QRect title = rig.place(content.texts.title);
    const QRect block = rig.place(*rig.button(content.texts.block));
    const QRect mode = placeOfMode();
    const QRect chooseMouse = rig.place(content.texts.chooseMouse);
    const QRect hint = rig.place(content.texts.hint);
    const QRect list = rig.placeOfList();
    const QRect status = rig.place(content.texts.status);
    const QRect footer = rig.place(content.texts.developedBy);
    const int divider = 1;
    EXPECT_EQ(gap(title, block), scaled(14));
    EXPECT_EQ(gap(block, mode), scaled(14));
    EXPECT_EQ(gap(mode, chooseMouse), 2 * scaled(14) + divider);
    EXPECT_EQ(gap(chooseMouse, hint), scaled(14));
    EXPECT_EQ(gap(hint, list), scaled(14));
    EXPECT_EQ(gap(list, status), 2 * scaled(14) + divider);
    EXPECT_EQ(gap(status, footer), scaled(14));
}

TEST_P(ElementTreeGeometryTest, CentersTheTitleOfTheModeBesideItsFirstButton) {
    rig.show(content);
    const int title = rig.place(content.texts.mode).center().y();
    EXPECT_NEAR(title, rig.place(*rig.button(content.texts.always)).center().y(), 1);
}

TEST_P(ElementTreeGeometryTest, DrawsTheDividersAcrossTheColumn) {
    rig.show(content);
    const QImage image = rig.surface.grab().toImage();
    const int y = placeOfMode().bottom() + 1 + scaled(14);
    const QColor line = image.pixelColor(scaled(20), y);
    const QColor background = image.pixelColor(0, y);
    const QColor text = rig.surface.palette().color(QPalette::WindowText);
    EXPECT_NEAR(line.red(), 0.2 * text.red() + 0.8 * background.red(), 2);
    for (int x = 0; x < image.width(); ++x) {
        const bool isInColumn = x >= scaled(20) && x < scaled(440) - scaled(20);
        ASSERT_EQ(image.pixelColor(x, y), isInColumn ? line : background) << x;
    }
}

TEST_P(ElementTreeGeometryTest, PutsTheRowsSixPointsApartWithFourAboveAndBelow) {
    content.devices = sample::mice(3);
    rig.show(content);
    const QRect list = rig.placeOfList();
    const QRect first = rig.place(*rig.button("Mouse 0"));
    const QRect second = rig.place(*rig.button("Mouse 1"));
    const QRect last = rig.place(*rig.button("Mouse 2"));
    EXPECT_EQ(first.top() - list.top(), scaled(4));
    EXPECT_EQ(gap(first, second), scaled(6));
    EXPECT_EQ(gap(second, last), scaled(6));
    EXPECT_EQ(list.bottom() - last.bottom(), scaled(4));
}

TEST_P(ElementTreeGeometryTest, MakesAShortListAsTallAsItsRows) {
    for (const int count : {1, 2, 3}) {
        content.devices = sample::mice(count);
        rig.show(content);
        const int row = rig.place(*rig.button("Mouse 0")).height();
        EXPECT_EQ(rig.list()->height(), count * row + (count - 1) * scaled(6) + 2 * scaled(4));
        EXPECT_FALSE(rig.list()->verticalScrollBar()->isVisible());
    }
}

TEST_P(ElementTreeGeometryTest, ScrollsAListTallerThanTwoHundredPointsOrTheFreeSpace) {
    content.devices = sample::mice(30);
    rig.show(content);
    EXPECT_LE(rig.list()->height(), scaled(200));
    EXPECT_TRUE(rig.list()->verticalScrollBar()->isVisible());
    const int listOfOne = [this] {
        sample::Content one = content;
        one.devices = sample::mice(1);
        rig.show(one);
        return rig.list()->height();
    }();
    // The list gets the height that the other elements do not need.
    const int rest = rig.place(content.texts.developedBy).bottom() - rig.place(content.texts.title).top() + 1 -
                     listOfOne + 2 * scaled(20);
    rig.show(content);
    EXPECT_EQ(rig.list()->height(), std::min(scaled(200), scaled(480) - rest));

    rig.surface.resize(scaled(440), scaled(700));
    rig.show(content);
    EXPECT_EQ(rig.list()->height(), scaled(200));
}

TEST_P(ElementTreeGeometryTest, AlignsTheScrollBarWithTheRightEdgeOfTheColumn) {
    content.devices = sample::mice(30);
    rig.show(content);
    const QRect bar = rig.place(*rig.list()->verticalScrollBar());
    EXPECT_EQ(bar.right() + 1, scaled(440) - scaled(20));
    EXPECT_EQ(bar.left() - rig.place(*rig.button("Mouse 0")).right() - 1, scaled(8));
}

TEST_P(ElementTreeGeometryTest, LeavesSpaceForTheFocusRingsOfTheRows) {
    for (const int count : {3, 30}) {
        content.devices = sample::mice(count);
        rig.show(content);
        const QWidget& row = *rig.button("Mouse 0");
        EXPECT_EQ(row.visibleRegion().boundingRect(), row.rect()) << count;
    }
}

TEST_P(ElementTreeGeometryTest, PaintsDotsOfEightPoints) {
    content.isMuted = true;
    rig.show(content);
    const QRect status = rig.place(content.texts.status);
    const QRect dot = painted(QRect(0, status.top(), status.left(), status.height()));
    EXPECT_EQ(dot.left(), scaled(20));
    EXPECT_EQ(dot.size(), QSize(scaled(8), scaled(8)));
    EXPECT_EQ(rig.surface.grab().toImage().pixelColor(dot.center()), roleColor(Color::green, rig.surface.palette()));
    EXPECT_NEAR(dot.center().y(), status.center().y(), 1);
    EXPECT_GE(status.left() - dot.right() - 1, scaled(6));
}

TEST_P(ElementTreeGeometryTest, PaintsTheDotOfADisconnectedDeviceAtTwoFifthsOfItsStrength) {
    rig.show(content);
    const QRect status = rig.place(content.texts.status);
    const QRect dot = painted(QRect(0, status.top(), status.left(), status.height()));
    const QColor background = rig.surface.palette().color(QPalette::Window);
    const QColor gray = roleColor(Color::gray, rig.surface.palette());
    const QColor seen = rig.surface.grab().toImage().pixelColor(dot.center());
    EXPECT_NEAR(seen.red(), 0.4 * gray.red() + 0.6 * background.red(), 2);
    EXPECT_NEAR(seen.green(), 0.4 * gray.green() + 0.6 * background.green(), 2);
    EXPECT_NEAR(seen.blue(), 0.4 * gray.blue() + 0.6 * background.blue(), 2);
}

TEST_P(ElementTreeGeometryTest, SetsEachTextInTheFontOfItsRole) {
    content.devices = {{"a", "Mouse", false}};
    rig.show(content);
    const auto widthIn = [](const std::string& text, double scale, bool isBold) {
        QFont scaledFont = QApplication::font();
        scaledFont.setPointSizeF(scaledFont.pointSizeF() * scale);
        scaledFont.setBold(isBold);
        return QFontMetricsF(scaledFont).horizontalAdvance(QString::fromStdString(text));
    };
    const auto expectFont = [&](const std::string& text, double scale, bool isBold) {
        EXPECT_NEAR(dynamic_cast<TextLabel&>(rig.label(text)).paragraph().preferredWidth(),
                    widthIn(text, scale, isBold), 1.5)
            << text;
    };
    const sample::Texts& texts = content.texts;
    expectFont(texts.title, 1, true);
    expectFont(texts.mode, 1, false);
    expectFont(texts.chooseMouse, 0.95, true);
    expectFont(texts.hint, 0.9, false);
    expectFont(texts.status, 0.9, false);
    expectFont(texts.developedBy, 0.85, false);
    const std::string link = "support@example.org";
    EXPECT_NEAR(rig.button(link)->width(), widthIn(link, 0.85, false), 1.5);
}

TEST_P(ElementTreeGeometryTest, UnderlinesTheLink) {
    rig.show(content);
    QImage image = rig.button("support@example.org")->grab().toImage();
    int longest = 0;
    for (int y = 0; y < image.height(); ++y) {
        int line = 0;
        for (int x = 0; x < image.width(); ++x) line += image.pixel(x, y) != image.pixel(0, 0) ? 1 : 0;
        longest = std::max(longest, line);
    }
    EXPECT_GE(longest, image.width() * 8 / 10);
}

TEST_P(ElementTreeGeometryTest, CentersTheFooterWithFourPointsBetweenItsParts) {
    rig.show(content);
    const QRect text = rig.place(content.texts.developedBy);
    const QRect link = rig.place(*rig.button("support@example.org"));
    EXPECT_EQ(link.left() - text.right() - 1, scaled(4));
    EXPECT_NEAR(text.left(), rig.surface.width() - 1 - link.right(), 1);
}

TEST_P(ElementTreeGeometryTest, CentersTheTextForAnEmptyListWithSixteenPointsAboveAndBelow) {
    rig.show(content);
    EXPECT_EQ(rig.list(), nullptr);
    const QRect text = rig.place(content.texts.noDevices);
    EXPECT_NEAR(text.left(), rig.surface.width() - 1 - text.right(), 1);
    EXPECT_EQ(gap(rig.place(content.texts.hint), text), scaled(14) + scaled(16));
    EXPECT_EQ(gap(text, rig.place(content.texts.status)), scaled(16) + 2 * scaled(14) + 1);
}

TEST_P(ElementTreeGeometryTest, AlignsTheCaptionOfARowWithItsRightEdge) {
    content.devices = {{"a", "Mouse", false}, {"b", "Rat", true}};
    rig.show(content);
    QAbstractButton& row = *rig.button("Mouse, disconnected");
    EXPECT_GE(painted(rig.place(row)).right(), rig.place(row).right() - 3);
    EXPECT_EQ(rig.place(row).width(), scaled(400));
}

TEST_P(ElementTreeGeometryTest, CutsNoTextInAnyLanguage) {
    for (const sample::Texts& texts : {sample::Texts(), sample::german(), sample::french(), sample::russian()}) {
        for (const int count : {0, 3, 200}) {
            content.texts = texts;
            content.devices = sample::mice(count);
            rig.show(content);
            EXPECT_LE(rig.view.minimumHeight(rig.surface.width()), rig.surface.height()) << texts.title;
            const QRect column(scaled(20), scaled(20), scaled(440) - 2 * scaled(20), scaled(480) - 2 * scaled(20));
            for (auto* each : rig.surface.findChildren<QLabel*>()) {
                auto& label = dynamic_cast<TextLabel&>(*each);
                EXPECT_EQ(each->height(), label.paragraph().heightForWidth(each->width()))
                    << each->text().toStdString();
                EXPECT_TRUE(column.contains(rig.place(*each))) << each->text().toStdString();
            }
            for (auto* each : rig.surface.findChildren<QRadioButton*>()) EXPECT_TRUE(column.contains(rig.place(*each)));
            EXPECT_TRUE(column.contains(rig.place(*rig.button("support@example.org"))));
        }
    }
}

TEST_P(ElementTreeGeometryTest, WrapsALongNameWithinItsRow) {
    const std::string unbroken(300, 'W');
    content.devices = {{"a", unbroken, false}, {"b", "A name of many words " + std::string(200, 'x'), false}};
    rig.show(content);
    for (auto* each : rig.surface.findChildren<QCheckBox*>()) EXPECT_LE(rig.place(*each).width(), scaled(400));
    EXPECT_GT(rig.button(unbroken + ", disconnected")->height(), 3 * scaled(12));
}

INSTANTIATE_TEST_SUITE_P(Fonts, ElementTreeGeometryTest,
                         testing::Values(FontSize{9, 1}, FontSize{10, 1}, FontSize{11, 1}, FontSize{13.75, 1.25},
                                         FontSize{16.5, 1.5}, FontSize{22, 2}),
                         [](const auto& each) { return "Of" + std::to_string(std::lround(each.param.size)); });

}  // namespace
}  // namespace kovra
