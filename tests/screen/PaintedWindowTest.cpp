// Measures the settings window of the application in pictures of it.

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QImage>
#include <QLabel>
#include <QPainter>
#include <QPalette>
#include <cmath>
#include <optional>
#include <stdexcept>
#include <string>

#include "BLE_kovra/platform/linux/ui/style/Points.h"
#include "BLE_kovra/platform/linux/ui/style/TextStyle.h"
#include "BLE_kovra/platform/linux/ui/windows/ViewWindow.h"
#include "tests/platform/linux/ui/QtRig.h"
#include "tests/support/AppRig.h"

namespace kovra {
namespace {

const DeviceDescription away{.product = "Absent"};

// The extent of a painted text, and how much ink it has, as a number of pixels of full strength.
struct Ink {
    QRect box;
    double amount = 0;
};

class PaintedWindowTest : public testing::Test {
  protected:
    PaintedWindowTest() {
        QFont font("DejaVu Sans");
        font.setPointSizeF(10);
        QApplication::setFont(font);
        computer.locale.languages = {"en"};
        rig.emplace(computer);
        rig->launch();
        computer.hid.detach(computer.hid.attach(away));
        computer.queue.advance(std::chrono::seconds(3));
        rig->delegate->openSettings();
        computer.queue.run();
        ShowWindow state{.title = computer.windows.title, .styleMask = 7, .contentSize = {440, 480}, .front = 1};
        state.content = computer.windows.shown;
        window.showWindow(state);
        QCoreApplication::processEvents();
        seen = window.grab().toImage();
    }

    QColor background() const { return window.palette().color(QPalette::Window); }
    QColor paintedOver(const QColor& color, double opacity) const {
        const auto part = [opacity](int one, int other) {
            return static_cast<int>(std::lround(opacity * one + (1 - opacity) * other));
        };
        return {part(color.red(), background().red()), part(color.green(), background().green()),
                part(color.blue(), background().blue())};
    }
    static bool isLike(const QColor& one, const QColor& other) {
        return std::abs(one.red() - other.red()) <= 2 && std::abs(one.green() - other.green()) <= 2 &&
               std::abs(one.blue() - other.blue()) <= 2;
    }
    int count(const QRect& in, const QColor& color) const {
        int found = 0;
        for (int y = in.top(); y <= in.bottom(); ++y) {
            for (int x = in.left(); x <= in.right(); ++x) found += isLike(seen.pixelColor(x, y), color) ? 1 : 0;
        }
        return found;
    }
    // Expects a gray dot of eight points at two fifths of its strength, and none at full strength.
    void expectPaleDot(const QRect& in) const {
        const QColor gray = roleColor(Color::gray, window.palette());
        EXPECT_NEAR(count(in, paintedOver(gray, 0.4)), 40, 12);
        EXPECT_EQ(count(in, gray), 0);
    }

    QRect placeOf(const std::string& key) const {
        const std::string text = rig->texts.s(key);
        for (const QLabel* label : window.findChildren<QLabel*>()) {
            if (label->text().toStdString() == text) return {label->mapTo(&window, QPoint()), label->size()};
        }
        throw std::runtime_error("no label " + text);
    }
    QRect placeOfRow() const {
        for (const QCheckBox* box : window.findChildren<QCheckBox*>()) {
            if (box->accessibleName().startsWith("Absent")) return {box->mapTo(&window, QPoint()), box->size()};
        }
        throw std::runtime_error("no row");
    }
    static Ink inkIn(const QImage& image, const QRect& in, const QColor& paper, const QColor& color) {
        Ink ink;
        const double full = std::abs(qGray(paper.rgb()) - qGray(color.rgb()));
        for (int y = in.top(); y <= in.bottom(); ++y) {
            for (int x = in.left(); x <= in.right(); ++x) {
                const double part = std::abs(qGray(paper.rgb()) - qGray(image.pixel(x, y))) / full;
                if (part > 0.2) ink.box |= QRect(x, y, 1, 1);
                ink.amount += part;
            }
        }
        return ink;
    }
    // Expects that the text in this part of the window has the extent and the weight of the same text in this font.
    void expectPainted(const QRect& in, const std::string& key, double size, bool isBold, Color role) const {
        QFont font = QApplication::font();
        font.setPointSizeF(font.pointSizeF() * size);
        font.setBold(isBold);
        const QColor color = roleColor(role, window.palette());
        QImage reference(seen.width(), 100, QImage::Format_RGB32);
        reference.fill(background());
        QPainter painter(&reference);
        painter.setPen(color);
        painter.setFont(font);
        painter.drawText(20, 50, QString::fromStdString(rig->texts.s(key)));
        painter.end();
        const Ink wanted = inkIn(reference, reference.rect(), background(), color);
        const Ink painted = inkIn(seen, in, background(), color);
        EXPECT_NEAR(painted.box.width(), wanted.box.width(), 2) << key;
        EXPECT_NEAR(painted.box.height(), wanted.box.height(), 1) << key;
        EXPECT_NEAR(painted.amount, wanted.amount, 0.04 * wanted.amount) << key;
    }

    const QtRig qt;
    Computer computer;
    std::optional<AppRig> rig;
    ViewWindow window{[](const ToResident&) {}};
    QImage seen;
};

TEST_F(PaintedWindowTest, TheDotsOfWhatIsOffArePaleGray) {
    const QRect status = placeOf("status.active");
    expectPaleDot({pixels(20), status.top(), status.left() - pixels(20), status.height()});
    const QRect row = placeOfRow();
    expectPaleDot({row.left() + pixels(18), row.top(), pixels(18), row.height()});
}

TEST_F(PaintedWindowTest, TheHeadlinesAreBold) {
    expectPainted(placeOf("settings.title"), "settings.title", 1, true, Color::primary);
    expectPainted(placeOf("settings.chooseMouse"), "settings.chooseMouse", 0.95, true, Color::primary);
}

TEST_F(PaintedWindowTest, TheCaptionsAreSmallerThanTheOtherTexts) {
    expectPainted(placeOf("settings.mode"), "settings.mode", 1, false, Color::primary);
    expectPainted(placeOf("status.active"), "status.active", 0.9, false, Color::secondary);
    expectPainted(placeOf("settings.developedBy"), "settings.developedBy", 0.85, false, Color::secondary);
    QRect end = placeOfRow();
    end.setLeft(end.right() - pixels(120));
    expectPainted(end, "device.disconnected", 0.85, false, Color::secondary);
}

}  // namespace
}  // namespace kovra
