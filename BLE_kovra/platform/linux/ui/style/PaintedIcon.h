#pragma once

#include <QIcon>
#include <functional>

class QPainter;
class QRectF;

namespace kovra {

// Returns an icon that `paint` paints again for each size and scale.
QIcon paintedIcon(std::function<void(QPainter& painter, const QRectF& rect)> paint);

}  // namespace kovra
