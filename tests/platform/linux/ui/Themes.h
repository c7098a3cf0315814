#pragma once

#include <QColor>
#include <QPalette>
#include <tuple>
#include <vector>

#include "BLE_kovra/platform/linux/ui/style/DesktopColors.h"

namespace kovra {

// Returns the palettes of light and dark desktops.
inline std::vector<QPalette> themes() {
    const std::tuple<QColor, QColor, QColor, QColor> colors[] = {
        // window, text, fields, buttons
        {QColor(0xEF, 0xEF, 0xEF), Qt::black, Qt::white, QColor(0xEF, 0xEF, 0xEF)},
        {QColor(239, 240, 241), QColor(35, 38, 41), Qt::white, QColor(252, 252, 252)},
        {QColor(0xF6, 0xF5, 0xF4), QColor(0x2E, 0x34, 0x36), Qt::white, QColor(0xED, 0xEB, 0xE9)},
        {QColor(42, 46, 50), QColor(252, 252, 252), QColor(27, 30, 32), QColor(49, 54, 59)},
        {QColor(0x2D, 0x2D, 0x2D), Qt::white, QColor(0x23, 0x26, 0x29), QColor(0x31, 0x36, 0x3B)},
        {QColor(0x35, 0x35, 0x35), QColor(0xEE, 0xEE, 0xEC), QColor(0x2D, 0x2D, 0x2D), QColor(0x37, 0x37, 0x37)},
        {Qt::black, Qt::white, Qt::black, QColor(0x10, 0x10, 0x10)}};
    std::vector<QPalette> made;
    for (const auto& [window, text, field, button] : colors) {
        QPalette palette(button, window);
        palette.setColor(QPalette::Window, window);
        palette.setColor(QPalette::WindowText, text);
        palette.setColor(QPalette::Text, text);
        palette.setColor(QPalette::Base, field);
        palette.setColor(QPalette::Button, button);
        palette.setColor(QPalette::ButtonText, text);
        made.push_back(palette);
    }
    made.push_back(darkColors());
    return made;
}

}  // namespace kovra
