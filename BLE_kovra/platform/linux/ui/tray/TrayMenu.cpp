#include "BLE_kovra/platform/linux/ui/tray/TrayMenu.h"

#include <QAction>
#include <QGuiApplication>
#include <QKeySequence>
#include <QScreen>
#include <algorithm>

namespace kovra {

namespace {

// Escapes "&", which the toolkit would interpret as the mark of a mnemonic. Replaces a tab, after which the toolkit
// would show the shortcut.
QString literal(const std::string& title) {
    return QString::fromStdString(title).replace('&', QLatin1String("&&")).replace('\t', ' ');
}

QKeySequence shortcut(const std::string& keyEquivalent) {
    const QString key = QString::fromStdString(keyEquivalent);
    if (key.size() != 1) return {};
    return {QKeyCombination(Qt::ControlModifier, static_cast<Qt::Key>(key[0].toUpper().unicode()))};
}

}  // namespace

void TrayMenu::show(const Menu& menu) {
    if (!hasLayoutOf(menu)) rebuild(menu);
    menu_ = menu;
    for (std::size_t position = 0; position < menu_.items.size(); ++position) refresh(position);
}

void TrayMenu::popUp(const QRect& icon) {
    if (widget_.isVisible()) return;
    const QScreen* screen = QGuiApplication::screenAt(icon.center());
    const int height = widget_.sizeHint().height();
    QPoint corner(icon.left(), icon.bottom() + 1);
    if (screen != nullptr && corner.y() + height > screen->geometry().bottom()) corner.setY(icon.top() - height);
    widget_.popup(corner);
}

bool TrayMenu::hasLayoutOf(const Menu& menu) const {
    const auto actions = widget_.actions();
    return std::equal(
        actions.begin(), actions.end(), menu.items.begin(), menu.items.end(),
        [](const QAction* action, const MenuItem& item) { return action->isSeparator() == item.isSeparator; });
}

void TrayMenu::rebuild(const Menu& menu) {
    widget_.clear();
    for (std::size_t position = 0; position < menu.items.size(); ++position) {
        if (menu.items[position].isSeparator) {
            widget_.addSeparator();
            continue;
        }
        QObject::connect(widget_.addAction(QString()), &QAction::triggered, [this, position] {
            refresh(position);  // the toolkit has flipped the check mark
            onChosen_(position);
        });
    }
}

void TrayMenu::refresh(std::size_t position) {
    const MenuItem& item = menu_.items[position];
    QAction& action = *widget_.actions()[static_cast<qsizetype>(position)];
    if (item.isSeparator) return;
    action.setText(literal(item.title));
    action.setShortcut(shortcut(item.keyEquivalent));
    action.setShortcutVisibleInContextMenu(true);
    action.setCheckable(item.state.has_value());
    action.setChecked(item.state == MenuItemState::on);
    action.setEnabled(item.isEnabled && item.action.has_value());
}

}  // namespace kovra
