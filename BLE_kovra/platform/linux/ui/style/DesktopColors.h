#pragma once

#include <QObject>
#include <QPalette>

#include "BLE_kovra/platform/linux/ui/style/PortalSettings.h"

namespace kovra {

// Gives the program's windows dark colors while the user prefers dark windows and the toolkit's theme for this desktop
// is light. GNOME tells programs the user's preference only through the portal, which the toolkit's theme for GNOME
// does not read. Plasma's theme does not follow changes while the program runs.
class DesktopColors : public QObject {
  public:
    DesktopColors();

    // The setting on which the colors depend. This object must outlive it.
    PortalSettings::Setting setting();

  private:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void prefer(bool darkIsPreferred);
    void apply();

    bool darkIsPreferred_ = false;
    bool isApplied_ = false;
};

// Returns the colors of windows on a dark desktop, as GNOME's own (Adwaita).
QPalette darkColors();

}  // namespace kovra
