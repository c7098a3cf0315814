#pragma once

#include <QRect>
#include <QString>
#include <QStringList>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "BLE_kovra/platform/View.h"
#include "BLE_kovra/platform/linux/ui/elements/Sharing.h"
#include "BLE_kovra/platform/linux/ui/style/TextStyle.h"

class QPainter;
class QWidget;

namespace kovra {

// Receives what the user does with the elements.
class UserActions {
  public:
    virtual ~UserActions() = default;
    // The user has changed the control at `path` to `value`. Returns the number of this change.
    virtual std::uint64_t changed(std::vector<std::string> path, std::variant<bool, std::string> value) = 0;
    virtual void followed(std::vector<std::string> path) = 0;
    virtual void scrolled() = 0;
};

// The host of an element, and the receiver of its actions.
struct Site {
    QWidget& host;             // paints the element, or is the parent of its widget
    UserActions& actions;      // outlives the element
    bool isInControl = false;  // a control contains the element and handles its input
};

// An element shows one view with its modifiers. It has a widget of its own, or its host paints it.
//
// Among the children of a view, each element belongs to a key: the child's id or, if it has none, its position. The
// element is kept while the child with its key is of the same kind. An update changes only what differs.
//
// Layout has three steps: query the widths, query the heights for a width, set the geometry. All sizes are in pixels of
// the host.
class Element {
  public:
    explicit Element(const Site& site) : site_(site) {}
    virtual ~Element() = default;
    Element(const Element&) = delete;
    Element& operator=(const Element&) = delete;

    // Returns whether this element can show the view.
    bool isFor(const View& view) const { return view.kind.index() == kind_; }
    // Shows the view. `inherited` is the text style of the parent. The view includes the user's changes up to number
    // `acknowledged`.
    void show(const View& view, const TextStyle& inherited, std::uint64_t acknowledged);

    SizeHint widthHint() { return widthHint(modifiers_.size()); }
    SizeHint heightHint(int width) { return heightHint(modifiers_.size(), width); }
    void place(const QRect& rect) { place(modifiers_.size(), rect); }

    // Paints the parts that have no widget.
    virtual void paint(QPainter&) {}
    // Appends the texts of this element and its children, in order.
    virtual void addTexts(QStringList&) const {}
    // Appends the widgets of this element and its children, in order.
    virtual void addWidgets(std::vector<QWidget*>&) const {}

    // The key is the view's id or, if it has none, its position among its siblings.
    void setKey(const Element* parent, std::string key);

  protected:
    // These functions concern the view without its modifiers.
    virtual void showContentOf(const View& view, const TextStyle& style, std::uint64_t acknowledged) = 0;
    virtual SizeHint contentWidth() = 0;
    virtual SizeHint contentHeight(int width) = 0;
    virtual void placeContent(const QRect& rect) = 0;

    const Site& site() const { return site_; }
    // Returns the keys of the elements from below the root down to this one.
    std::vector<std::string> path() const;

  private:
    // These functions apply the first `count` modifiers, the innermost first.
    SizeHint widthHint(std::size_t count);
    SizeHint heightHint(std::size_t count, int width);
    void place(std::size_t count, const QRect& rect);

    Site site_;
    std::size_t kind_ = std::variant_npos;
    std::vector<Modifier> modifiers_;
    const Element* parent_ = nullptr;
    std::string key_;
};

// Returns a new element that shows the view.
std::unique_ptr<Element> makeElement(const View& view, const Site& site, const TextStyle& inherited,
                                     std::uint64_t acknowledged);

}  // namespace kovra
