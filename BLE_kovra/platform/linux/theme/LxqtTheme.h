#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "BLE_kovra/platform/linux/loop/SdEventLoop.h"
#include "BLE_kovra/platform/linux/theme/PanelTone.h"
#include "BLE_kovra/platform/posix/FileDescriptor.h"

namespace kovra {

// Whether the panel of LXQt is light or dark, according to LXQt's theme: its style sheet for the panel has the color of
// the text on the panel's buttons. Nothing is known about a theme that takes this color from the palette of Qt.
class LxqtTheme {
  public:
    // Reads the theme, and again after each change of LXQt's configuration. `changed` is called from the queue after a
    // change of the tone.
    LxqtTheme(SdEventLoop& loop, std::function<void()> changed);

    std::optional<PanelTone> tone() const { return tone_; }

  private:
    void watchConfiguration(SdEventLoop& loop);
    void drain();

    const std::function<void()> changed_;
    std::optional<PanelTone> tone_;
    FileDescriptor inotify_{-1};
    std::unique_ptr<SdEventLoop::Watch> watch_;
};

// Returns the value of the key `theme` in the group General of LXQt's configuration; empty if there is none.
std::string lxqtThemeName(std::string_view configuration);

// Returns the color of the text on the panel's buttons in the style sheet of a theme, as 0xRRGGBB.
std::optional<std::uint32_t> lxqtTextColor(std::string_view styleSheet);

}  // namespace kovra
