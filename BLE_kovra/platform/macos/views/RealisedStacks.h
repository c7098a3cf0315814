#pragma once

#include "BLE_kovra/platform/ViewChildren.h"
#include "BLE_kovra/platform/macos/views/RealisedView.h"

namespace kovra {

class RealisedStack : public RealisedView {
  public:
    explicit RealisedStack(const ViewSite& site);
    std::vector<std::string> texts() const override;

  private:
    NSView* innermost() const override { return stack_; }
    void showKind(const View& view, const Surroundings& around) override;
    void arrange(bool isHorizontal);

    NSStackView* stack_;
    std::optional<Stack> shown_;
    ViewChildren<RealisedView> children_;
};

// A scroll view that is as tall as its child, or shorter if there is no room. It keeps its scroll position when the
// child changes.
class RealisedScroll : public RealisedView {
  public:
    explicit RealisedScroll(const ViewSite& site);
    std::vector<std::string> texts() const override;

  private:
    NSView* innermost() const override { return opening_; }
    void showKind(const View& view, const Surroundings& around) override;

    NSScrollView* opening_;
    NSView* document_;
    ViewChildren<RealisedView> children_;
};

}  // namespace kovra
