#pragma once

#include <QIcon>
#include <QList>
#include <functional>

class QPainter;
class QRectF;

namespace kovra {

// Returns an icon that `paint` paints again for each size and scale. `offered` are the widths in pixels that a reader
// who takes all sizes receives, such as a window manager. If there are none, the toolkit decides.
QIcon paintedIcon(std::function<void(QPainter& painter, const QRectF& rect)> paint, const QList<int>& offered = {});

}  // namespace kovra
