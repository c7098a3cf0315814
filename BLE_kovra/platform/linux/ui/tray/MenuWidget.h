#pragma once

#include <QMenu>

namespace kovra {

// The toolkit's menu, with two differences. While it is open, the shortcuts that it shows work, and Escape and Ctrl+W
// close it. And its boxes and separators are visible in dark and light themes: their contrast with the menu is at least
// 3 to 1 and 1.5 to 1 if the theme's own text reaches that.
class MenuWidget : public QMenu {
  private:
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void initStyleOption(QStyleOptionMenuItem* option, const QAction* action) const override;

    bool isPainting_ = false;
};

}  // namespace kovra
