#include "BLE_kovra/platform/macos/views/RealisedView.h"

#include "BLE_kovra/platform/macos/views/RealisedControls.h"
#include "BLE_kovra/platform/macos/views/RealisedLeaves.h"
#include "BLE_kovra/platform/macos/views/RealisedStacks.h"
#include "BLE_kovra/platform/macos/views/ViewLayout.h"
#include "BLE_kovra/platform/macos/views/ViewWidth.h"

namespace kovra {

namespace {

struct Make {
    const ViewSite& site;

    std::unique_ptr<RealisedView> operator()(const Text&) const { return std::make_unique<RealisedText>(site); }
    std::unique_ptr<RealisedView> operator()(const Circle&) const { return std::make_unique<RealisedCircle>(site); }
    std::unique_ptr<RealisedView> operator()(const Toggle&) const { return std::make_unique<RealisedToggle>(site); }
    std::unique_ptr<RealisedView> operator()(const Picker&) const { return std::make_unique<RealisedPicker>(site); }
    std::unique_ptr<RealisedView> operator()(const Link&) const { return std::make_unique<RealisedLink>(site); }
    std::unique_ptr<RealisedView> operator()(const Divider&) const { return std::make_unique<RealisedDivider>(site); }
    std::unique_ptr<RealisedView> operator()(const Spacer&) const { return std::make_unique<RealisedSpacer>(site); }
    std::unique_ptr<RealisedView> operator()(const Stack&) const { return std::make_unique<RealisedStack>(site); }
    std::unique_ptr<RealisedView> operator()(const ScrollView&) const { return std::make_unique<RealisedScroll>(site); }
};

NSView* modified(NSView* inner, const View& view) {
    NSView* outer = inner;
    for (std::size_t i = 0; i < view.modifiers.size(); ++i) {
        const Modifier& modifier = view.modifiers[i];
        if (const auto* padding = std::get_if<Padding>(&modifier)) outer = padded(outer, *padding);
        if (const auto* frame = std::get_if<Frame>(&modifier))
            outer = framed(outer, *frame, kovra::takesWidth(view, i));
    }
    return outer;
}

}  // namespace

bool RealisedView::isFor(const View& view) const {
    return view.kind.index() == kind_ && view.modifiers == modifiers_ && kovra::takesWidth(view) == takesWidth_ &&
           canShow(view);
}

void RealisedView::show(const View& view, const Surroundings& around) {
    showKind(view, {around.role.inside(view.modifiers), widthInside(view, around.width)});
    if (outermost_ != nil) return;
    kind_ = view.kind.index();
    modifiers_ = view.modifiers;
    takesWidth_ = kovra::takesWidth(view);
    outermost_ = modified(innermost(), view);
}

std::unique_ptr<RealisedView> realise(const View& view, const ViewSite& site, const Surroundings& around) {
    auto made = std::visit(Make{site}, view.kind);
    made->show(view, around);
    return made;
}

}  // namespace kovra
