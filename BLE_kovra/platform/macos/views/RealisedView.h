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

// Where views live. Both are called from the event loop, and outlive the views.
struct ViewSite {
    std::function<void(const std::string& url)> open;
    std::function<void()> used;  // the user has used a control, whose function has been called
};

// What a view finds around it.
struct Surroundings {
    TextRole role;
    std::optional<double> width;  // of the column that it stands in
};

// One view as AppKit's own, with its modifiers. It stays for as long as there is a view of the same kind with the same
// modifiers and id in the same place of the tree, and changes only what differs.
class RealisedView {
  public:
    explicit RealisedView(const ViewSite& site) : site_(site) {}
    virtual ~RealisedView() = default;
    RealisedView(const RealisedView&) = delete;
    RealisedView& operator=(const RealisedView&) = delete;

    // Whether it can show the view.
    bool isFor(const View& view) const;
    void show(const View& view, const Surroundings& around);

    // With all that the modifiers put around it.
    NSView* outermost() const { return outermost_; }
    bool takesWidth() const { return takesWidth_; }
    // The texts in it, in order.
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

// What realises a view of this kind, which it shows already.
std::unique_ptr<RealisedView> realise(const View& view, const ViewSite& site, const Surroundings& around);

}  // namespace kovra
