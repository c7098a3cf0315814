#pragma once

#include <QIcon>
#include <functional>

class QPainter;
class QRectF;

namespace kovra {

// An icon that is painted anew for each size and scale.
QIcon paintedIcon(std::function<void(QPainter& painter, const QRectF& place)> paint);

}  // namespace kovra
