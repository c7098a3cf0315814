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

// Who is told what the user does.
class UserActions {
  public:
    virtual ~UserActions() = default;
    // Returns the number of this change.
    virtual std::uint64_t changed(std::vector<std::string> path, std::variant<bool, std::string> value) = 0;
    virtual void followed(std::vector<std::string> path) = 0;
    virtual void scrolled() = 0;
};

// Where an element lives.
struct Site {
    QWidget& host;             // paints it, or is the parent of its widget
    UserActions& actions;      // outlives the element
    bool isInControl = false;  // the control speaks for it, to the mouse, the keyboard and screen readers
};

// One view on the screen, with its modifiers: a widget, or something that its host paints. It stays for as long as
// there is a view of the same kind with the same id in the same place of the tree, and changes only what differs.
//
// Laid out by asking for widths first, then for heights at a width, then placing. All in the host's pixels.
class Element {
  public:
    explicit Element(const Site& site) : site_(site) {}
    virtual ~Element() = default;
    Element(const Element&) = delete;
    Element& operator=(const Element&) = delete;

    // Whether it can show the view.
    bool isFor(const View& view) const { return view.kind.index() == kind_; }
    // `heard` is the last of the user's changes that the view knows of.
    void show(const View& view, const TextStyle& around, std::uint64_t heard);

    Wish width() { return width(modifiers_.size()); }
    Wish height(int width) { return height(modifiers_.size(), width); }
    void place(const QRect& place) { this->place(modifiers_.size(), place); }

    // What of it the host paints.
    virtual void paint(QPainter&) {}
    // The texts in it, in order.
    virtual void addTexts(QStringList&) const {}
    // The widgets in it, in order.
    virtual void addWidgets(std::vector<QWidget*>&) const {}

    // A child's id among its siblings, or its position where it has none.
    void setKey(const Element* parent, std::string key);

  protected:
    virtual void showKind(const View& view, const TextStyle& style, std::uint64_t heard) = 0;
    virtual Wish kindWidth() = 0;
    virtual Wish kindHeight(int width) = 0;
    virtual void placeKind(const QRect& place) = 0;

    const Site& site() const { return site_; }
    // From the root.
    std::vector<std::string> path() const;

  private:
    // With this many of the modifiers, the innermost first.
    Wish width(std::size_t count);
    Wish height(std::size_t count, int width);
    void place(std::size_t count, const QRect& place);

    Site site_;
    std::size_t kind_ = std::variant_npos;
    std::vector<Modifier> modifiers_;
    const Element* parent_ = nullptr;
    std::string key_;
};

// The element for a view of this kind, which shows it already.
std::unique_ptr<Element> makeElement(const View& view, const Site& site, const TextStyle& around, std::uint64_t heard);

}  // namespace kovra
