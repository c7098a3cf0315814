#include "BLE_kovra/platform/linux/tray/XEmbedTray.h"

#include <variant>

namespace kovra {

namespace {

// A tray that embeds windows recolors nothing.
ShowTray message(const TrayContents& contents, IconLook look) {
    const IconPaint paint = paintOf(look == IconLook::recolored ? IconLook::outlinedLight : look);
    return {contents.image, contents.imageIsTemplate, contents.toolTip, contents.menu, paint.ink, paint.outline};
}

}  // namespace

XEmbedTray::XEmbedTray(MainQueue& queue, XTray& tray, PanelLook& look, WindowProcess& window, TrayItem& item)
    : tray_(tray),
      look_(look),
      window_(window),
      item_(item),
      looks_(look.listen([this] { send(); })),
      choice_(queue, {.lookForTrays = [this](bool isWanted) { lookForTrays(isWanted); },
                      .showIcon = [this](bool isWanted) { showIcon(isWanted); }}) {
    listening_ = window_.listen([&item](const ToResident& message) {
        if (const auto* chosen = std::get_if<ItemChosen>(&message)) item.choose(chosen->position);
    });
}

XEmbedTray::~XEmbedTray() {
    if (isShown_) window_.hideTray();
}

void XEmbedTray::follow(StatusNotifierWatcher& watcher) {
    hosts_ = watcher.listen([this](bool hasHost) { choice_.setHostPresent(hasHost); });
    choice_.setHostPresent(watcher.hasHost());
}

void XEmbedTray::lookForTrays(bool isWanted) {
    watching_.reset();
    if (!isWanted) return;
    watching_ = tray_.watch([this](const XTray::State& state) { choice_.setTrayPresent(state.isPresent); });
}

void XEmbedTray::showIcon(bool isWanted) {
    isShown_ = isWanted;
    if (isWanted)
        send();
    else
        window_.hideTray();
}

void XEmbedTray::show(const TrayContents&, const TrayChanges&) { send(); }

void XEmbedTray::send() {
    if (isShown_) window_.show(message(item_.contents(), look_.look()));
}

}  // namespace kovra
