#pragma once

#include <QAbstractButton>
#include <QCheckBox>
#include <QLabel>
#include <QRadioButton>
#include <QScrollArea>
#include <QScrollBar>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "BLE_kovra/platform/linux/ui/elements/LabelledButton.h"
#include "BLE_kovra/platform/linux/ui/style/Points.h"
#include "BLE_kovra/platform/linux/ui/windows/ElementTree.h"
#include "tests/platform/linux/ui/QtRig.h"
#include "tests/platform/linux/ui/SampleView.h"

namespace kovra {

// A view on a surface of the settings window's size, and a record of the user's actions.
class ViewRig : private UserActions {
  public:
    struct Change {
        std::vector<std::string> path;
        std::variant<bool, std::string> value;
        bool operator==(const Change&) const = default;
    };

    ViewRig() {
        surface.resize(pixels(440), pixels(480));
        surface.show();
    }

    void show(const sample::Content& content, std::uint64_t acknowledged = 0) {
        show(sample::view(content), acknowledged);
    }
    void show(const View& shown, std::uint64_t acknowledged = 0) {
        view.show(shown, acknowledged);
        view.layOut(surface.size());
    }

    QLabel& label(const std::string& text) const {
        for (auto* each : surface.findChildren<QLabel*>()) {
            if (each->text().toStdString() == text) return *each;
        }
        throw std::runtime_error("no label " + text);
    }
    // Finds a check box, a radio button or a link by its accessible name.
    QAbstractButton* button(const std::string& name) const {
        for (auto* each : surface.findChildren<QAbstractButton*>()) {
            if (each->accessibleName().toStdString() == name) return each;
        }
        return nullptr;
    }
    QScrollArea* list() const { return surface.findChild<QScrollArea*>(); }
    // Returns the rectangle of the button on the surface, without the margin for its focus ring.
    QRect place(const QAbstractButton& button) const {
        const QRect whole = place(static_cast<const QWidget&>(button));
        const bool hasRing = qobject_cast<const QCheckBox*>(&button) || qobject_cast<const QRadioButton*>(&button);
        return hasRing ? whole.adjusted(0, focusRingMargin, -focusRingMargin, -focusRingMargin) : whole;
    }
    QRect placeOfList() const {
        return place(*list()).adjusted(0, 0, list()->verticalScrollBar()->isVisible() ? 0 : -focusRingMargin, 0);
    }
    QRect place(const QWidget& widget) const { return {widget.mapTo(&surface, QPoint()), widget.size()}; }
    QRect place(const std::string& text) const { return place(label(text)); }

    Surface surface;
    ElementTree view{surface, *this};
    std::vector<Change> changes;
    std::vector<std::vector<std::string>> links;  // the paths of the links that were followed

  private:
    std::uint64_t changed(std::vector<std::string> path, std::variant<bool, std::string> value) override {
        changes.push_back({std::move(path), std::move(value)});
        return changes.size();
    }
    void followed(std::vector<std::string> path) override { links.push_back(std::move(path)); }
    void scrolled() override {}
};

}  // namespace kovra
