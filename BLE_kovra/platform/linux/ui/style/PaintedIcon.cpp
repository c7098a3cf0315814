#include "BLE_kovra/platform/linux/ui/style/PaintedIcon.h"

#include <QIconEngine>
#include <QPainter>
#include <utility>

namespace kovra {

namespace {

class Engine : public QIconEngine {
  public:
    explicit Engine(std::function<void(QPainter&, const QRectF&)> paint) : paint_(std::move(paint)) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode, QIcon::State) override { paint_(*painter, rect); }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return pixmap;
    }
    QIconEngine* clone() const override { return new Engine(*this); }

  private:
    std::function<void(QPainter&, const QRectF&)> paint_;
};

}  // namespace

QIcon paintedIcon(std::function<void(QPainter& painter, const QRectF& rect)> paint) {
    return QIcon(new Engine(std::move(paint)));
}

}  // namespace kovra
