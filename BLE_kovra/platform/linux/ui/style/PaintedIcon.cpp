#include "BLE_kovra/platform/linux/ui/style/PaintedIcon.h"

#include <QIconEngine>
#include <QPainter>
#include <utility>

namespace kovra {

namespace {

class Engine : public QIconEngine {
  public:
    Engine(std::function<void(QPainter&, const QRectF&)> paint, QList<QSize> offered)
        : paint_(std::move(paint)), offered_(std::move(offered)) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode, QIcon::State) override { paint_(*painter, rect); }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return pixmap;
    }
    QList<QSize> availableSizes(QIcon::Mode, QIcon::State) override { return offered_; }
    QIconEngine* clone() const override { return new Engine(*this); }

  private:
    std::function<void(QPainter&, const QRectF&)> paint_;
    QList<QSize> offered_;
};

}  // namespace

QIcon paintedIcon(std::function<void(QPainter& painter, const QRectF& rect)> paint, const QList<int>& offered) {
    QList<QSize> sizes;
    for (const int width : offered) sizes.append({width, width});
    return QIcon(new Engine(std::move(paint), std::move(sizes)));
}

}  // namespace kovra
