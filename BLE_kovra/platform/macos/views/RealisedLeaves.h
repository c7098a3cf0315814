#pragma once

#include "BLE_kovra/platform/macos/views/RealisedView.h"

@class KovraDot;

namespace kovra {

// A text that wraps at the width of its column. In a row, a text in the standard font wraps where the row is too
// narrow; texts in other fonts stay on one line.
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

// A filled circle. It is only a decoration: the text beside it contains the same information.
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
