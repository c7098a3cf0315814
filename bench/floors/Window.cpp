// The barest settings window as a program of its own, which ends when it is closed.

#include <QApplication>

#include "bench/floors/SettingsWidgets.h"

int main(int count, char** arguments) {
    const QApplication application(count, arguments);
    floors::SettingsWidgets window;
    window.show();
    return QApplication::exec();
}
