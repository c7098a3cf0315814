#include "BLE_kovra/platform/linux/ui/elements/LabelledButton.h"

#include <QScrollArea>

namespace kovra {

void scrollIntoSight(QWidget& widget, Qt::FocusReason reason) {
    if (reason != Qt::TabFocusReason && reason != Qt::BacktabFocusReason) return;
    for (QWidget* around = widget.parentWidget(); around != nullptr; around = around->parentWidget()) {
        if (auto* area = qobject_cast<QScrollArea*>(around)) area->ensureWidgetVisible(&widget, 0, widget.height());
    }
}

}  // namespace kovra
