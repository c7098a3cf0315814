#include "BLE_kovra/platform/linux/tray/XEmbedTray.h"

#include <variant>

namespace kovra {

namespace {

ShowTray message(const TrayContents& contents) {
    return {contents.image, contents.imageIsTemplate, contents.toolTip, contents.menu};
}

}  // namespace

XEmbedTray::XEmbedTray(MainQueue& queue, XConnection& x, WindowProcess& window, TrayItem& item)
    : window_(window), choice_(queue) {
    listening_ = window_.listen([&item](const ToResident& told) {
        if (const auto* chosen = std::get_if<ItemChosen>(&told)) item.choose(chosen->position);
    });
    choice_.onLookingForTrays = [this, &x](bool isWanted) {
        watch_.reset();
        if (!isWanted) return;
        watch_ = std::make_unique<XEmbedTrayWatch>(x, [this](bool isThere) { choice_.setTrayIsThere(isThere); });
    };
    choice_.onIcon = [this, &item](bool isWanted) {
        isShown_ = isWanted;
        if (isWanted)
            window_.show(message(item.contents()));
        else
            window_.hideTray();
    };
}

XEmbedTray::~XEmbedTray() {
    if (isShown_) window_.hideTray();
}

void XEmbedTray::show(const TrayContents& contents, const TrayChanges&) {
    if (isShown_) window_.show(message(contents));
}

}  // namespace kovra
