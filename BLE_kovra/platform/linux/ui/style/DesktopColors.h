#pragma once

#include <QDBusMessage>
#include <QObject>
#include <QPalette>

namespace kovra {

// Gives the program's windows dark colors while the user prefers dark windows and the toolkit's theme for this desktop
// is light. GNOME tells programs the user's preference only through the portal (org.freedesktop.portal.Settings, the
// key color-scheme of org.freedesktop.appearance), which the toolkit's theme for GNOME does not read.
//
// Nothing is asked where no desktop is named (XDG_CURRENT_DESKTOP). The portal is not started for this.
class DesktopColors : public QObject {
    Q_OBJECT

  public:
    // Waits for the portal's answer for at most 100 ms, so that the first window opens in the right colors.
    DesktopColors();
    ~DesktopColors() override;
    Q_DISABLE_COPY_MOVE(DesktopColors)

  public slots:
    void settingChanged(const QDBusMessage& signal);

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
