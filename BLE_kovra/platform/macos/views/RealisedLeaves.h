#pragma once

#include "BLE_kovra/platform/macos/views/RealisedView.h"

@class KovraDot;

namespace kovra {

// A text that wraps to the column that it stands in. In a row it stays on one line, and is cut with an ellipsis where
// there is no room; small print is not.
class RealisedText : public RealisedView {
  public:
    using RealisedView::RealisedView;
    std::vector<std::string> texts() const override { return {shown_}; }

  private:
    NSView* innermost() const override { return label_; }
    void showKind(const View& view, const Surroundings& around) override;

    NSTextField* label_ = nil;
    std::string shown_;
    std::optional<TextRole> role_;
};

// Decoration: what it says is said by the text beside it too.
class RealisedCircle : public RealisedView {
  public:
    explicit RealisedCircle(const ViewSite& site);

  private:
    NSView* innermost() const override;
    void showKind(const View& view, const Surroundings& around) override;

    KovraDot* dot_;
    std::optional<Circle> shown_;
};

class RealisedDivider : public RealisedView {
  public:
    explicit RealisedDivider(const ViewSite& site);

  private:
    NSView* innermost() const override { return line_; }
    void showKind(const View&, const Surroundings&) override {}

    NSBox* line_;
};

class RealisedSpacer : public RealisedView {
  public:
    explicit RealisedSpacer(const ViewSite& site)
        : RealisedView(site), nothing_([[NSView alloc] initWithFrame:NSZeroRect]) {}

  private:
    NSView* innermost() const override { return nothing_; }
    void showKind(const View&, const Surroundings&) override {}

    NSView* nothing_;
};

}  // namespace kovra
