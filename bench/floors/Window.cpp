// The minimal settings window as a separate program, which exits when the window is closed.

#include <QApplication>

#include "bench/floors/SettingsWidgets.h"

int main(int count, char** arguments) {
    const QApplication application(count, arguments);
    floors::SettingsWidgets window;
    window.show();
    return QApplication::exec();
}
