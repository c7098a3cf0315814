#pragma once

#include <QDialog>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "BLE_kovra/platform/Alert.h"

namespace kovra {

class TextView;

// One alert on the screen. Its texts are shown as they are and are never cut; they can be selected with the mouse and
// copied. Return presses the first button, wherever the focus is, and Space the one that has it; Escape and the frame's
// close answer without a button.
class AlertWindow : public QDialog {
  public:
    using OnAnswered = std::function<void(std::optional<std::size_t> button)>;
    // Calls `onAnswered` once it is hidden.
    AlertWindow(const Alert& alert, OnAnswered onAnswered);

  private:
    QWidget* addButtons(const std::vector<std::string>& titles);
    void measure();
    void wrapAt(int width);
    void answer(std::optional<std::size_t> button);

    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void reject() override { answer(std::nullopt); }

    OnAnswered onAnswered_;
    QWidget* icon_;
    TextView* message_;
    TextView* information_;
};

}  // namespace kovra
