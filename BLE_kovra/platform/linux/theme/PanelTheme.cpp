#include "BLE_kovra/platform/linux/theme/PanelTheme.h"

#include <utility>

#include "BLE_kovra/platform/linux/desktop/XdgEnvironment.h"

namespace kovra {

namespace {

// Desktops whose panels paint symbolic icons in their own color. This was seen in the first three. The panels of the
// others are built with the same toolkits, or are documented to do so.
const std::vector<std::string> recoloring{"GNOME",      "KDE",    "XFCE",  "Budgie",
                                          "X-Cinnamon", "COSMIC", "Unity", "Pantheon"};

}  // namespace

PanelTheme::PanelTheme(SdEventLoop& loop, SessionBus& bus, XTray* tray, std::vector<std::string> desktops)
    : loop_(loop),
      bus_(bus),
      tray_(tray),
      desktops_(std::move(desktops)),
      look_(anyOf(desktops_, recoloring) ? IconLook::recolored : IconLook::outlinedLight) {
    if (look_.look() != IconLook::recolored)
        loop_.async(lifetime_.guard([this] { query(); }));
    else if (anyOf(desktops_, {"KDE"}))
        loop_.async(lifetime_.guard([this] { plasma_.emplace(loop_, bus_, [this] { look_.repeat(); }); }));
}

void PanelTheme::query() {
    if (tray_ != nullptr) {
        watching_ = tray_->watch([this](const XTray::State& state) {
            announced_ = state.color ? std::optional(toneBehind(*state.color)) : std::nullopt;
            update();
        });
    }
    if (anyOf(desktops_, {"LXQt"})) lxqt_.emplace(loop_, [this] { update(); });
    portal_.emplace(bus_, [this](std::optional<PanelTone> tone) {
        preferred_ = tone;
        update();
    });
    update();
}

void PanelTheme::update() {
    const auto known = announced_ || !lxqt_ ? announced_ : lxqt_->tone();
    if (known)
        look_.set(known == PanelTone::light ? IconLook::onLight : IconLook::onDark);
    else
        look_.set(preferred_ == PanelTone::light ? IconLook::outlinedDark : IconLook::outlinedLight);
}

}  // namespace kovra
