#pragma once

#include <array>
#include <tuple>

#include "BLE_kovra/platform/Drawing.h"
#include "BLE_kovra/platform/Menu.h"
#include "BLE_kovra/platform/linux/wire/Form.h"

namespace kovra {

template <>
inline constexpr auto members<Point> = std::tuple(always("x", &Point::x), always("y", &Point::y));

template <>
inline constexpr auto members<Size> = std::tuple(always("width", &Size::width), always("height", &Size::height));

template <>
inline constexpr const char* nameOf<RoundedRectangle> = "roundedRectangle";
template <>
inline constexpr auto members<RoundedRectangle> = std::tuple(always("origin", &RoundedRectangle::origin),
                                                             always("size", &RoundedRectangle::size),
                                                             always("cornerRadii", &RoundedRectangle::cornerRadii));

template <>
inline constexpr const char* nameOf<Segment> = "segment";
template <>
inline constexpr auto members<Segment> = std::tuple(always("from", &Segment::from), always("to", &Segment::to));

template <>
inline constexpr auto members<Stroke> = std::tuple(always("shape", &Stroke::shape),
                                                   always("lineWidth", &Stroke::lineWidth));

template <>
inline constexpr auto members<Drawing> = std::tuple(always("name", &Drawing::name), always("size", &Drawing::size),
                                                    always("strokes", &Drawing::strokes));

// Of an action the name crosses alone.
template <>
struct Form<MenuAction> {
    static Json write(const MenuAction& action) { return action.name; }
    static bool read(const Json& json, MenuAction& action) {
        action.perform = [] {};
        return Form<std::string>::read(json, action.name);
    }
};

template <>
inline constexpr auto namesOf<MenuItemState> = std::array{"off", "on"};

template <>
inline constexpr auto members<MenuItem> = std::tuple(always("title", &MenuItem::title),
                                                     ifAny("action", &MenuItem::action),
                                                     ifAny("keyEquivalent", &MenuItem::keyEquivalent),
                                                     ifAny("state", &MenuItem::state),
                                                     always("enabled", &MenuItem::isEnabled),
                                                     always("separator", &MenuItem::isSeparator));

template <>
inline constexpr auto members<Menu> = std::tuple(always("items", &Menu::items));

}  // namespace kovra
