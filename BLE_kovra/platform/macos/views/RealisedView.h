#pragma once

#import <AppKit/AppKit.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "BLE_kovra/platform/View.h"

namespace kovra {

// The functions that all views of a window share. The views call them from the event loop and do not outlive them.
struct ViewSite {
    std::function<void(const std::string& url)> open;
    std::function<void()> used;  // called after the user used a control and the control's function ran
};

// The properties that a view inherits from its ancestors.
struct Surroundings {
    TextRole role;
    std::optional<double> width;  // of the enclosing column
};

// The AppKit counterpart of one view and its modifiers. An update changes only what differs. Among the children of a
// view, each counterpart belongs to the child's id or, if the child has none, to its position. The counterpart is kept
// while isFor() accepts that child.
class RealisedView {
  public:
    explicit RealisedView(const ViewSite& site) : site_(site) {}
    virtual ~RealisedView() = default;
    RealisedView(const RealisedView&) = delete;
    RealisedView& operator=(const RealisedView&) = delete;

    // Returns whether this object can show the view: one of the same kind, with the same modifiers.
    bool isFor(const View& view) const;
    void show(const View& view, const Surroundings& around);

    // Returns the AppKit view, including the views that the modifiers add around it.
    NSView* outermost() const { return outermost_; }
    bool takesWidth() const { return takesWidth_; }
    // Returns the texts in this view, in reading order.
    virtual std::vector<std::string> texts() const { return {}; }

  protected:
    virtual NSView* innermost() const = 0;
    virtual bool canShow(const View&) const { return true; }
    virtual void showKind(const View& view, const Surroundings& around) = 0;

    const ViewSite& site() const { return site_; }

  private:
    const ViewSite& site_;
    NSView* outermost_ = nil;
    std::size_t kind_ = std::variant_npos;
    std::vector<Modifier> modifiers_;
    bool takesWidth_ = false;
};

// Creates the counterpart of a view and shows the view in it.
std::unique_ptr<RealisedView> realise(const View& view, const ViewSite& site, const Surroundings& around);

}  // namespace kovra
