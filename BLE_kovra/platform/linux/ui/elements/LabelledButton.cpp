#include "BLE_kovra/platform/linux/ui/elements/LabelledButton.h"

#include <QScrollArea>

namespace kovra {

void scrollIntoView(QWidget& widget, Qt::FocusReason reason) {
    if (reason != Qt::TabFocusReason && reason != Qt::BacktabFocusReason) return;
    for (QWidget* parent = widget.parentWidget(); parent != nullptr; parent = parent->parentWidget()) {
        if (auto* area = qobject_cast<QScrollArea*>(parent)) area->ensureWidgetVisible(&widget, 0, widget.height());
    }
}

}  // namespace kovra
