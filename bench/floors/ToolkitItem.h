#pragma once

#include <QApplication>
#include <QIcon>
#include <QMenu>
#include <QPainter>
#include <QPixmap>
#include <QSystemTrayIcon>

namespace floors {

// A status item and its menu, made with the toolkit. A program with a window opens it when settings() is triggered.
class ToolkitItem {
  public:
    ToolkitItem() {
        QAction* mute = menu_.addAction("Mute trackpad");
        mute->setCheckable(true);
        QObject::connect(mute, &QAction::toggled, [this](bool isMuted) { tray_.setIcon(icon(isMuted)); });
        menu_.addAction("Shortcut: Ctrl+Alt+T")->setEnabled(false);
        settings_ = menu_.addAction("Settings…");
        settings_->setShortcut(QKeySequence("Ctrl+,"));
        menu_.addAction("Launch at login")->setCheckable(true);
        menu_.addAction("Activate driver…");
        menu_.addAction("About…");
        menu_.addSeparator();
        QAction* quit = menu_.addAction("Quit");
        quit->setShortcut(QKeySequence("Ctrl+Q"));
        QObject::connect(quit, &QAction::triggered, [] { QApplication::quit(); });
        tray_.setIcon(icon(false));
        tray_.setToolTip("BLE-kovra");
        tray_.setContextMenu(&menu_);
    }

    QAction* settings() { return settings_; }
    void show() { tray_.show(); }

  private:
    static QIcon icon(bool isMuted) {
        QIcon made;
        for (const int size : {22, 44}) made.addPixmap(picture(size, isMuted));
        return made;
    }
    static QPixmap picture(int size, bool isMuted) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.scale(size / 22.0, size / 22.0);
        painter.drawRect(3, 4, 15, 13);
        painter.drawLine(11, 11, 11, 17);
        if (isMuted) painter.drawLine(3, 3, 18, 18);
        return pixmap;
    }

    QMenu menu_;
    QSystemTrayIcon tray_;
    QAction* settings_ = nullptr;
};

}  // namespace floors
