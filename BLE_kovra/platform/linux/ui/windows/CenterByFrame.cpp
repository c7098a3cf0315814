#include "BLE_kovra/platform/linux/ui/windows/CenterByFrame.h"

#include <QEvent>
#include <QMargins>
#include <QPoint>
#include <QRect>
#include <QScreen>
#include <QWidget>
#include <QWindow>
#include <algorithm>

namespace kovra {

namespace {

// Returns the top left corner of the centered frame.
QPoint centeredCorner(const QWidget& window) {
    const QRect area = window.screen()->availableGeometry();
    QRect frame(QPoint(), window.size().grownBy(window.windowHandle()->frameMargins()));
    frame.moveCenter(area.center());
    return {std::max(frame.left(), area.left()), std::max(frame.top(), area.top())};
}

// An event filter that centers the window again once it is exposed. By then it has its frame.
class CenterOnExpose : public QObject {
  public:
    explicit CenterOnExpose(QWidget& window) : QObject(&window), window_(window) {
        window.windowHandle()->installEventFilter(this);
    }

  private:
    bool eventFilter(QObject* object, QEvent* event) override {
        QWindow& shown = *window_.windowHandle();
        if (event->type() == QEvent::Expose && shown.isExposed()) {
            shown.removeEventFilter(this);
            deleteLater();
            // QWidget::move() would also change which corner the window manager takes the position for. It might move
            // the window first and read that later.
            shown.setFramePosition(centeredCorner(window_));
        }
        return QObject::eventFilter(object, event);
    }

    QWidget& window_;
};

}  // namespace

void centerByFrame(QWidget& window) {
    window.winId();  // creates the window, which has no frame yet
    window.move(centeredCorner(window));
    new CenterOnExpose(window);
}

}  // namespace kovra
