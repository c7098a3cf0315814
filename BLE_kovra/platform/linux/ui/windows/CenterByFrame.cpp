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

// While a window manager puts the window into its frame, the toolkit may report negative margins. KWin 6.3 was seen to
// cause this: its frame is one pixel large at first.
bool isKnown(const QMargins& frame) {
    return std::min({frame.left(), frame.top(), frame.right(), frame.bottom()}) >= 0;
}

// An event filter that centers the window again once it is exposed and its frame is known.
class CenterOnExpose : public QObject {
  public:
    explicit CenterOnExpose(QWidget& window) : QObject(&window), window_(window) {
        window.windowHandle()->installEventFilter(this);
    }

  private:
    bool eventFilter(QObject* object, QEvent* event) override {
        QWindow& shown = *window_.windowHandle();
        const bool mayHaveFrame = event->type() == QEvent::Expose || event->type() == QEvent::Move;
        if (mayHaveFrame && shown.isExposed() && isKnown(shown.frameMargins())) {
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
