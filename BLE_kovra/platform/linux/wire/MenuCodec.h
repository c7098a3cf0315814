#pragma once

#include <array>
#include <tuple>

#include "BLE_kovra/platform/Drawing.h"
#include "BLE_kovra/platform/Menu.h"
#include "BLE_kovra/platform/linux/wire/Codec.h"

namespace kovra {

template <>
inline constexpr auto members<Point> = std::tuple(required("x", &Point::x), required("y", &Point::y));

template <>
inline constexpr auto members<Size> = std::tuple(required("width", &Size::width), required("height", &Size::height));

template <>
inline constexpr const char* nameOf<RoundedRectangle> = "roundedRectangle";
template <>
inline constexpr auto members<RoundedRectangle> =
    std::tuple(required("origin", &RoundedRectangle::origin), required("size", &RoundedRectangle::size),
               required("cornerRadii", &RoundedRectangle::cornerRadii));

template <>
inline constexpr const char* nameOf<Segment> = "segment";
template <>
inline constexpr auto members<Segment> = std::tuple(required("from", &Segment::from), required("to", &Segment::to));

template <>
inline constexpr auto members<Stroke> = std::tuple(
    required("shape", &Stroke::shape), required("lineWidth", &Stroke::lineWidth), required("gap", &Stroke::isGap));

template <>
inline constexpr auto members<Glyph> =
    std::tuple(required("pixels", &Glyph::pixels), required("strokes", &Glyph::strokes));

template <>
inline constexpr auto members<Drawing> =
    std::tuple(required("name", &Drawing::name), required("size", &Drawing::size),
               required("strokes", &Drawing::strokes), required("glyphs", &Drawing::glyphs));

// Only the name of an action is encoded.
template <>
struct Codec<MenuAction> {
    static Json write(const MenuAction& action) { return action.name; }
    static bool read(const Json& json, MenuAction& action) {
        action.perform = [] {};
        return Codec<std::string>::read(json, action.name);
    }
};

template <>
inline constexpr auto namesOf<MenuItemState> = std::array{"off", "on"};

template <>
inline constexpr auto members<MenuItem> =
    std::tuple(required("title", &MenuItem::title), optional("action", &MenuItem::action),
               optional("keyEquivalent", &MenuItem::keyEquivalent), optional("state", &MenuItem::state),
               required("enabled", &MenuItem::isEnabled), required("separator", &MenuItem::isSeparator));

template <>
inline constexpr auto members<Menu> = std::tuple(required("items", &Menu::items));

}  // namespace kovra
