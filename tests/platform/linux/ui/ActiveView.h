#pragma once

#include <gtest/gtest.h>

#include <QTest>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/platform/linux/ui/ViewRig.h"

namespace kovra {

// A view in the active window, with simulated input.
class ActiveView : public testing::Test {
  protected:
    using Change = ViewRig::Change;
    using Changes = std::vector<Change>;

    ActiveView() {
        rig.surface.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&rig.surface));
    }

    void showMice(int count) {
        content.devices = sample::mice(count);
        rig.show(content);
    }
    QAbstractButton& button(const std::string& name) const {
        auto* found = rig.button(name);
        if (found == nullptr) throw std::runtime_error("no button " + name);
        return *found;
    }
    // Returns the path of a device's row in the view.
    static std::vector<std::string> rowOf(const std::string& id) { return {"6", "0", id}; }
    static QPoint middle(const QWidget& widget) { return widget.rect().center(); }
    static void press(QWidget& widget) { QTest::mousePress(&widget, Qt::LeftButton, {}, middle(widget)); }
    static void release(QWidget& widget, QPoint at) { QTest::mouseRelease(&widget, Qt::LeftButton, {}, at); }
    static void click(QWidget& widget) { QTest::mouseClick(&widget, Qt::LeftButton, {}, middle(widget)); }
    static void key(Qt::Key key) { QTest::keyClick(QApplication::focusWidget(), key); }
    static std::string focused() {
        const QWidget* widget = QApplication::focusWidget();
        return widget == nullptr ? "" : widget->accessibleName().toStdString();
    }

    const QtRig qt;
    ViewRig rig;
    sample::Content content;
};

}  // namespace kovra
