#include "BLE_kovra/platform/linux/ui/tray/MenuWidget.h"

#include <QAction>
#include <QKeyEvent>
#include <QKeySequence>
#include <QPainter>
#include <QStyleOptionMenuItem>

#include "BLE_kovra/platform/linux/ui/style/KeyCommand.h"
#include "BLE_kovra/platform/linux/ui/style/TextStyle.h"

namespace kovra {

void MenuWidget::keyPressEvent(QKeyEvent* event) {
    if (keyCommand(*event) == KeyCommand::close) {
        close();
        return;
    }
    const QKeySequence keys(latinKeys(*event));
    for (QAction* action : actions()) {
        if (!action->isEnabled() || action->shortcut() != keys) continue;
        close();
        action->trigger();
        return;
    }
    QMenu::keyPressEvent(event);
}

void MenuWidget::paintEvent(QPaintEvent* event) {
    isPainting_ = true;
    QMenu::paintEvent(event);
    isPainting_ = false;
    QPainter painter(this);
    const QColor color = separatorColor(palette().color(QPalette::Text), palette().color(QPalette::Base));
    for (QAction* action : actions()) {
        if (!action->isSeparator()) continue;
        const QRect space = actionGeometry(action);
        painter.fillRect(space.left(), space.center().y(), space.width(), 1, color);
    }
}

// The style Fusion draws separators in a color that no palette changes. So it is told to draw nothing instead.
void MenuWidget::initStyleOption(QStyleOptionMenuItem* option, const QAction* action) const {
    QMenu::initStyleOption(option, action);
    QPalette& colors = option->palette;
    colors.setColor(QPalette::Window, outlineBaseColor(colors.color(QPalette::Text), colors.color(QPalette::Base)));
    if (isPainting_ && action->isSeparator()) option->menuItemType = QStyleOptionMenuItem::Margin;
}

}  // namespace kovra
