#include "BLE_kovra/platform/linux/tray/XEmbedTray.h"

#include <variant>

namespace kovra {

namespace {

ShowTray message(const TrayContents& contents) {
    return {contents.image, contents.imageIsTemplate, contents.toolTip, contents.menu};
}

}  // namespace

XEmbedTray::XEmbedTray(MainQueue& queue, XConnection& x, WindowProcess& window, TrayItem& item)
    : window_(window),
      choice_(queue, {.lookForTrays = [this, &x](bool isWanted) { lookForTrays(x, isWanted); },
                      .showIcon = [this, &item](bool isWanted) { showIcon(item, isWanted); }}) {
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

void XEmbedTray::lookForTrays(XConnection& x, bool isWanted) {
    watch_.reset();
    if (!isWanted) return;
    watch_ = std::make_unique<XEmbedTrayWatch>(x, [this](bool isPresent) { choice_.setTrayPresent(isPresent); });
}

void XEmbedTray::showIcon(const TrayItem& item, bool isWanted) {
    isShown_ = isWanted;
    if (isWanted)
        window_.show(message(item.contents()));
    else
        window_.hideTray();
}

void XEmbedTray::show(const TrayContents& contents, const TrayChanges&) {
    if (isShown_) window_.show(message(contents));
}

}  // namespace kovra
