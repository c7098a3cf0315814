#include "BLE_kovra/platform/linux/ui/style/KeyCommand.h"

#include <QKeyEvent>

namespace kovra {

namespace {

// On X and Wayland.
constexpr quint32 scanCodeOfQ = 24;
constexpr quint32 scanCodeOfW = 25;
constexpr quint32 scanCodeOfComma = 59;

}  // namespace

QKeyCombination latinKeys(const QKeyEvent& event) {
    const bool isNonLatinLetter = event.key() > Qt::Key_AsciiTilde && event.key() < Qt::Key_Escape;
    if (isNonLatinLetter) {
        switch (event.nativeScanCode()) {
            case scanCodeOfQ:
                return QKeyCombination(event.modifiers(), Qt::Key_Q);
            case scanCodeOfW:
                return QKeyCombination(event.modifiers(), Qt::Key_W);
            case scanCodeOfComma:
                return QKeyCombination(event.modifiers(), Qt::Key_Comma);
            default:
                break;
        }
    }
    return event.keyCombination();
}

std::optional<KeyCommand> keyCommand(const QKeyEvent& event) {
    const QKeyCombination keys = latinKeys(event);
    if (keys == QKeyCombination(Qt::Key_Escape) || keys == QKeyCombination(Qt::ControlModifier, Qt::Key_W))
        return KeyCommand::close;
    if (keys == QKeyCombination(Qt::ControlModifier, Qt::Key_Comma)) return KeyCommand::openSettings;
    if (keys == QKeyCombination(Qt::ControlModifier, Qt::Key_Q)) return KeyCommand::quit;
    return std::nullopt;
}

}  // namespace kovra
