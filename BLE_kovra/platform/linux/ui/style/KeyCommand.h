#pragma once

#include <QKeyCombination>
#include <optional>

class QKeyEvent;

namespace kovra {

// What the user can request with the keyboard in every window and menu of the program: Escape and Ctrl+W close it,
// Ctrl+, opens the settings, Ctrl+Q quits.
enum class KeyCommand { close, openSettings, quit };
std::optional<KeyCommand> keyCommand(const QKeyEvent& event);

// Returns the keys that are pressed. In a layout without Latin letters, the positions of Q, W and the comma on a Latin
// keyboard count.
QKeyCombination latinKeys(const QKeyEvent& event);

}  // namespace kovra
