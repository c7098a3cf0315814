// The toolkit's item and the minimal settings window in one process. The window is created at the first opening, then
// hidden and shown.

#include <memory>

#include "bench/floors/SettingsWidgets.h"
#include "bench/floors/ToolkitItem.h"

int main(int count, char** arguments) {
    const QApplication application(count, arguments);
    QApplication::setQuitOnLastWindowClosed(false);
    floors::ToolkitItem item;
    std::unique_ptr<floors::SettingsWidgets> window;
    QObject::connect(item.settings(), &QAction::triggered, [&window] {
        if (!window) window = std::make_unique<floors::SettingsWidgets>();
        window->show();
        // A window that is shown again must come to the front, as the program's window does.
        window->raise();
        window->activateWindow();
    });
    item.show();
    return QApplication::exec();
}
