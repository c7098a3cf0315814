#include "BLE_kovra/platform/macos/views/RealisedControls.h"

#include <algorithm>
#include <utility>

#include "BLE_kovra/platform/macos/foundation/FoundationString.h"
#include "BLE_kovra/platform/macos/views/ActionTarget.h"
#include "BLE_kovra/platform/macos/views/TextAppearance.h"

namespace kovra {

namespace {

NSControlStateValue stateValue(bool isOn) { return isOn ? NSControlStateValueOn : NSControlStateValueOff; }

void showState(NSButton* button, bool isOn) {
    if ([button state] != stateValue(isOn)) [button setState:stateValue(isOn)];
}

bool isOneText(const View& view) {
    return view.children.size() == 1 && std::holds_alternative<Text>(view.children[0].kind);
}

// Returns the texts joined to one text for screen readers.
std::string joined(const std::vector<std::string>& texts) {
    std::string all;
    for (const std::string& text : texts) all += (all.empty() ? "" : ", ") + text;
    return all;
}

}  // namespace

std::vector<std::string> RealisedToggle::texts() const {
    return label_ ? label_->texts() : std::vector<std::string>{name_};
}

NSView* RealisedToggle::innermost() const { return row_ == nil ? static_cast<NSView*>(button_) : row_; }

bool RealisedToggle::canShow(const View& view) const {
    return isOneText(view) ? label_ == nullptr : label_ && label_->isFor(view.children.front());
}

void RealisedToggle::showKind(const View& view, const Surroundings& around) {
    const auto& toggle = std::get<Toggle>(view.kind);
    set_ = toggle.set;
    const Surroundings inside{around.role, std::nullopt};
    if (button_ == nil)
        make(view, inside);
    else if (label_)
        label_->show(view.children.front(), inside);

    const std::string name = label_            ? joined(label_->texts())
                             : isOneText(view) ? std::get<Text>(view.children[0].kind).content
                                               : std::string();
    if (name != name_ && label_) [button_ setAccessibilityLabel:foundationString(name)];
    if (name != name_ && !label_) [button_ setTitle:foundationString(name)];
    name_ = name;
    showState(button_, toggle.isOn);
}

void RealisedToggle::make(const View& view, const Surroundings& around) {
    target_ = [[KovraActionTarget alloc] initWithWork:[this] { use(); }];
    button_ = [NSButton checkboxWithTitle:@"" target:target_ action:@selector(perform:)];
    if (isOneText(view) || view.children.empty()) {
        [button_ setFont:roleFont(around.role.inside(view.children.empty() ? std::vector<Modifier>()
                                                                           : view.children[0].modifiers))];
        return;
    }
    label_ = realise(view.children.front(), site(), around);
    NSView* label = label_->outermost();
    [label setAccessibilityChildren:@[]];  // the texts of the children are the button's accessibility label
    [label addGestureRecognizer:[[NSClickGestureRecognizer alloc] initWithTarget:button_
                                                                          action:@selector(performClick:)]];
    row_ = [NSStackView stackViewWithViews:@[ button_, label ]];
    [row_ setOrientation:NSUserInterfaceLayoutOrientationHorizontal];
    [row_ setAlignment:NSLayoutAttributeCenterY];
    [row_ setDistribution:NSStackViewDistributionFill];
    [button_ setContentHuggingPriority:NSLayoutPriorityRequired forOrientation:NSLayoutConstraintOrientationHorizontal];
}

void RealisedToggle::use() {
    const auto set = set_;
    if (set) set([button_ state] == NSControlStateValueOn);
    site().used();
}

bool RealisedPicker::canShow(const View& view) const {
    const auto& options = std::get<Picker>(view.kind).options;
    return std::equal(options.begin(), options.end(), shown_.options.begin(), shown_.options.end(),
                      [](const Picker::Option& one, const Picker::Option& other) { return one.tag == other.tag; });
}

void RealisedPicker::showKind(const View& view, const Surroundings& around) {
    const auto& picker = std::get<Picker>(view.kind);
    if (row_ == nil) make(picker);
    if (picker.title != shown_.title) {
        [title_ setStringValue:foundationString(picker.title)];
        [column_ setAccessibilityLabel:foundationString(picker.title)];
    }
    for (std::size_t i = 0; i < picker.options.size(); ++i) {
        NSButton* button = [buttons_ objectAtIndex:i];
        const Picker::Option& option = picker.options[i];
        if (i >= shown_.options.size() || option.title != shown_.options[i].title)
            [button setTitle:foundationString(option.title)];
        if (role_ != around.role) [button setFont:roleFont(around.role)];
        showState(button, option.tag == picker.selection);
    }
    if (role_ != around.role) [title_ setFont:roleFont(around.role)];
    role_ = around.role;
    shown_ = picker;
}

void RealisedPicker::make(const Picker& picker) {
    title_ = [NSTextField labelWithString:@""];
    buttons_ = [NSMutableArray array];
    targets_ = [NSMutableArray array];
    for (const Picker::Option& option : picker.options) {
        KovraActionTarget* target = [[KovraActionTarget alloc] initWithWork:[this, tag = option.tag] { use(tag); }];
        [targets_ addObject:target];
        [buttons_ addObject:[NSButton radioButtonWithTitle:@"" target:target action:@selector(perform:)]];
    }
    column_ = [NSStackView stackViewWithViews:buttons_];
    [column_ setOrientation:NSUserInterfaceLayoutOrientationVertical];
    [column_ setAlignment:NSLayoutAttributeLeading];
    [column_ setDistribution:NSStackViewDistributionFill];
    [column_ setAccessibilityElement:YES];
    [column_ setAccessibilityRole:NSAccessibilityRadioGroupRole];
    row_ = [NSStackView stackViewWithViews:@[ title_, column_ ]];
    [row_ setOrientation:NSUserInterfaceLayoutOrientationHorizontal];
    [row_ setAlignment:NSLayoutAttributeTop];
    [row_ setDistribution:NSStackViewDistributionFill];
}

void RealisedPicker::use(const std::string& tag) {
    const auto select = shown_.select;
    if (select) select(tag);
    site().used();
}

RealisedLink::RealisedLink(const ViewSite& site) : RealisedView(site) {
    target_ = [[KovraActionTarget alloc] initWithWork:[this] { this->site().open(shown_.destination); }];
    button_ = [NSButton buttonWithTitle:@"" target:target_ action:@selector(perform:)];
    [button_ setBordered:NO];
    [button_ setAccessibilityRole:NSAccessibilityLinkRole];
}

void RealisedLink::showKind(const View& view, const Surroundings& around) {
    const auto& link = std::get<Link>(view.kind);
    if (link.title != shown_.title) [button_ setTitle:foundationString(link.title)];
    shown_ = link;
    if (role_ == around.role) return;
    role_ = around.role;
    [button_ setFont:roleFont(*role_)];
    [button_ setContentTintColor:roleColor(role_->color)];
}

}  // namespace kovra
