#pragma once

#include <QFont>

#include "BLE_kovra/platform/linux/ui/style/PortalSettings.h"

namespace kovra {

// Gives the program's windows the text size that the user has chosen on GNOME ("Large Text", a factor), if the toolkit
// does not know it. It does not on Wayland. On X11 it reads the factor as a resolution.
class TextSize {
  public:
    // Returns whether the toolkit does not know the user's factor.
    static bool isUnknownToToolkit();

    explicit TextSize(bool isUnknown = isUnknownToToolkit());

    // The setting on which the text size depends. This object must outlive it.
    PortalSettings::Setting setting();

  private:
    void apply(double factor) const;

    const bool isUnknown_;
    const QFont font_;  // of the toolkit's theme
};

}  // namespace kovra
