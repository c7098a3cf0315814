#pragma once

#include <QDialog>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "BLE_kovra/platform/Alert.h"
#include "BLE_kovra/platform/linux/wire/Messages.h"

namespace kovra {

class TextView;

// The window of one alert. It shows its texts literally and in full; the user can select them with the mouse and copy
// them. The Return key presses the first button, wherever the focus is. Space presses the focused button. Escape,
// Ctrl+W and the close button of the frame close the alert without a button. Windows of other programs may cover it.
class AlertWindow : public QDialog {
  public:
    using OnAnswered = std::function<void(std::optional<std::size_t> button)>;
    // Calls `onAnswered` after the window is hidden. Sends SettingsWanted and QuitWanted.
    AlertWindow(const Alert& alert, OnAnswered onAnswered, SendToResident send);

  private:
    QWidget* addButtons(const std::vector<std::string>& titles);
    void updateSizes();
    void wrapAt(int width);
    void answer(std::optional<std::size_t> button);

    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void reject() override { answer(std::nullopt); }

    OnAnswered onAnswered_;
    SendToResident send_;
    QWidget* icon_;
    TextView* message_;
    TextView* information_;
};

}  // namespace kovra
