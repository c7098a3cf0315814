#pragma once

#include <QIcon>
#include <functional>

class QPainter;
class QRectF;

namespace kovra {

// An icon that is repainted for each size and scale.
QIcon paintedIcon(std::function<void(QPainter& painter, const QRectF& rect)> paint);

}  // namespace kovra
