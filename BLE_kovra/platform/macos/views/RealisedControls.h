#pragma once

#include "BLE_kovra/platform/macos/views/RealisedView.h"

@class KovraActionTarget;

namespace kovra {

// A check box. A label that is a single text becomes the button's title. Any other label is placed beside the button. A
// click on that label toggles the button, and the label's texts become the button's accessibility label.
class RealisedToggle : public RealisedView {
  public:
    using RealisedView::RealisedView;
    std::vector<std::string> texts() const override;

  private:
    NSView* innermost() const override;
    bool canShow(const View& view) const override;
    void showKind(const View& view, const Surroundings& around) override;
    void make(const View& view, const Surroundings& around);
    void use();

    NSButton* button_ = nil;
    NSStackView* row_ = nil;
    KovraActionTarget* target_ = nil;
    std::unique_ptr<RealisedView> label_;
    std::function<void(bool isOn)> set_;
    std::string name_;
};

// A title with a column of radio buttons.
class RealisedPicker : public RealisedView {
  public:
    using RealisedView::RealisedView;

  private:
    NSView* innermost() const override { return row_; }
    bool canShow(const View& view) const override;
    void showKind(const View& view, const Surroundings& around) override;
    void make(const Picker& picker);
    void use(const std::string& tag);

    NSStackView* row_ = nil;
    NSTextField* title_ = nil;
    NSStackView* column_ = nil;
    NSMutableArray<NSButton*>* buttons_ = nil;
    NSMutableArray<KovraActionTarget*>* targets_ = nil;
    Picker shown_;
    std::optional<TextRole> role_;
};

class RealisedLink : public RealisedView {
  public:
    explicit RealisedLink(const ViewSite& site);
    std::vector<std::string> texts() const override { return {shown_.title}; }

  private:
    NSView* innermost() const override { return button_; }
    void showKind(const View& view, const Surroundings& around) override;

    NSButton* button_;
    KovraActionTarget* target_;
    Link shown_;
    std::optional<TextRole> role_;
};

}  // namespace kovra
