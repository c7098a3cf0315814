#include "BLE_kovra/platform/linux/wire/Encoding.h"

#include <cstdint>
#include <nlohmann/json.hpp>
#include <type_traits>
#include <utility>
#include <vector>

namespace kovra {

namespace {

using Json = nlohmann::json;

constexpr const char* showTray = "showTray";
constexpr const char* popUpMenu = "popUpMenu";
constexpr const char* itemChosen = "itemChosen";
constexpr const char* menuClosed = "menuClosed";

std::string asLine(const Json& message) { return message.dump(-1, ' ', false, Json::error_handler_t::replace) + '\n'; }

// Writing.

Json written(const Point& point) { return {{"x", point.x}, {"y", point.y}}; }
Json written(const Size& size) { return {{"width", size.width}, {"height", size.height}}; }

Json written(const RoundedRectangle& shape) {
    return {
        {"origin", written(shape.origin)}, {"size", written(shape.size)}, {"cornerRadii", written(shape.cornerRadii)}};
}
Json written(const Segment& shape) { return {{"from", written(shape.from)}, {"to", written(shape.to)}}; }

Json written(const Stroke& stroke) {
    Json json = std::visit([](const auto& shape) { return written(shape); }, stroke.shape);
    json["lineWidth"] = stroke.lineWidth;
    return json;
}

Json written(const MenuItem& item) {
    if (item.isSeparator) return {{"separator", true}};
    Json json{{"title", item.title}, {"enabled", item.isEnabled}};
    if (item.action) json["action"] = item.action->name;
    if (!item.keyEquivalent.empty()) json["keyEquivalent"] = item.keyEquivalent;
    if (item.state) json["checked"] = *item.state == MenuItemState::on;
    return json;
}

template <typename T>
Json written(const std::vector<T>& list) {
    Json json = Json::array();
    for (const T& each : list) json.push_back(written(each));
    return json;
}

Json written(const Drawing& drawing) {
    return {{"name", drawing.name}, {"size", written(drawing.size)}, {"strokes", written(drawing.strokes)}};
}

Json written(const ShowTray& tray) {
    Json json{{"is", showTray},
              {"template", tray.imageIsTemplate},
              {"toolTip", tray.toolTip},
              {"menu", written(tray.menu.items)}};
    if (tray.image) json["image"] = written(*tray.image);
    return json;
}

Json written(const PopUpMenu& request) {
    return {{"is", popUpMenu},
            {"x", request.x},
            {"y", request.y},
            {"asked", request.asked.count()},
            {"menu", written(request.menu.items)}};
}

Json written(const ItemChosen& chosen) { return {{"is", itemChosen}, {"position", chosen.position}}; }

Json written(const MenuClosed& closed) {
    Json json{{"is", menuClosed}, {"asked", closed.asked.count()}};
    if (closed.chosen) json["chosen"] = *closed.chosen;
    return json;
}

// Reading: each returns whether it was what it had to be.

bool read(const Json& json, bool& value) {
    if (!json.is_boolean()) return false;
    value = json.get<bool>();
    return true;
}

bool read(const Json& json, double& value) {
    if (!json.is_number()) return false;
    value = json.get<double>();
    return true;
}

bool read(const Json& json, std::size_t& value) {
    if (!json.is_number_unsigned()) return false;
    value = json.get<std::size_t>();
    return true;
}

// A number of this kind that is within its limits.
template <typename Kind>
std::optional<Kind> integer(const Json& json) {
    if (json.is_number_unsigned() && std::in_range<Kind>(json.get<std::uint64_t>())) return json.get<Kind>();
    if (json.is_number_integer() && !json.is_number_unsigned() && std::in_range<Kind>(json.get<std::int64_t>()))
        return json.get<Kind>();
    return std::nullopt;
}

bool read(const Json& json, int& value) {
    const auto number = integer<int>(json);
    value = number.value_or(0);
    return number.has_value();
}

bool read(const Json& json, std::chrono::milliseconds& value) {
    const auto number = integer<std::int64_t>(json);
    value = std::chrono::milliseconds(number.value_or(0));
    return number && *number >= 0;  // so that differences of two never overflow
}

bool read(const Json& json, std::string& value) {
    if (!json.is_string()) return false;
    value = json.get<std::string>();
    return true;
}

// Null where there is no such member, or no object.
const Json* member(const Json& object, const char* name) {
    if (!object.is_object()) return nullptr;
    const auto found = object.find(name);
    return found == object.end() ? nullptr : &*found;
}

template <typename T>
bool read(const Json& object, const char* name, T& value);

// A member that may be missing; what it then means stands in `value` already.
template <typename T>
bool readIfThere(const Json& object, const char* name, T& value) {
    return member(object, name) == nullptr || read(object, name, value);
}

bool read(const Json& json, Point& point) { return read(json, "x", point.x) && read(json, "y", point.y); }
bool read(const Json& json, Size& size) { return read(json, "width", size.width) && read(json, "height", size.height); }

bool read(const Json& json, Stroke& stroke) {
    if (!read(json, "lineWidth", stroke.lineWidth)) return false;
    if (member(json, "from") != nullptr) {
        auto& segment = stroke.shape.emplace<Segment>();
        return read(json, "from", segment.from) && read(json, "to", segment.to);
    }
    auto& rectangle = stroke.shape.emplace<RoundedRectangle>();
    return read(json, "origin", rectangle.origin) && read(json, "size", rectangle.size) &&
           read(json, "cornerRadii", rectangle.cornerRadii);
}

bool read(const Json& json, Drawing& drawing) {
    return read(json, "name", drawing.name) && read(json, "size", drawing.size) &&
           read(json, "strokes", drawing.strokes);
}

bool read(const Json& json, MenuAction& action) {
    action.perform = [] {};
    return read(json, action.name);
}

bool read(const Json& json, MenuItemState& state) {
    bool checked = false;
    if (!read(json, checked)) return false;
    state = checked ? MenuItemState::on : MenuItemState::off;
    return true;
}

bool read(const Json& json, MenuItem& item) {
    if (!json.is_object() || !readIfThere(json, "separator", item.isSeparator)) return false;
    if (item.isSeparator) return true;
    return read(json, "title", item.title) && read(json, "enabled", item.isEnabled) &&
           readIfThere(json, "action", item.action) && readIfThere(json, "keyEquivalent", item.keyEquivalent) &&
           readIfThere(json, "checked", item.state);
}

bool read(const Json& json, ShowTray& tray) {
    return readIfThere(json, "image", tray.image) && read(json, "template", tray.imageIsTemplate) &&
           read(json, "toolTip", tray.toolTip) && read(json, "menu", tray.menu.items);
}

bool read(const Json& json, PopUpMenu& request) {
    return read(json, "x", request.x) && read(json, "y", request.y) && read(json, "asked", request.asked) &&
           read(json, "menu", request.menu.items);
}

bool read(const Json& json, ItemChosen& chosen) { return read(json, "position", chosen.position); }

bool read(const Json& json, MenuClosed& closed) {
    return read(json, "asked", closed.asked) && readIfThere(json, "chosen", closed.chosen);
}

template <typename T>
bool read(const Json& json, std::optional<T>& value) {
    return read(json, value.emplace());
}

template <typename T>
bool read(const Json& json, std::vector<T>& list) {
    if (!json.is_array()) return false;
    for (const Json& each : json) {
        if (!read(each, list.emplace_back())) return false;
    }
    return true;
}

template <typename T>
bool read(const Json& object, const char* name, T& value) {
    const Json* found = member(object, name);
    return found != nullptr && read(*found, value);
}

// The message, if it is the one of this name.
template <typename Message, typename Any>
bool readAs(const char* name, const Json& json, std::optional<Any>& message) {
    std::string is;
    Message found;
    if (!read(json, "is", is) || is != name || !read(json, found)) return false;
    message = std::move(found);
    return true;
}

Json parsed(std::string_view line) { return Json::parse(line, nullptr, false); }

}  // namespace

std::string encode(const ToWindow& message) {
    return std::visit([](const auto& each) { return asLine(written(each)); }, message);
}

std::string encode(const ToResident& message) {
    return std::visit([](const auto& each) { return asLine(written(each)); }, message);
}

std::optional<ToWindow> decodeToWindow(std::string_view line) {
    const Json json = parsed(line);
    std::optional<ToWindow> message;
    readAs<ShowTray>(showTray, json, message) || readAs<PopUpMenu>(popUpMenu, json, message);
    return message;
}

std::optional<ToResident> decodeToResident(std::string_view line) {
    const Json json = parsed(line);
    std::optional<ToResident> message;
    readAs<ItemChosen>(itemChosen, json, message) || readAs<MenuClosed>(menuClosed, json, message);
    return message;
}

}  // namespace kovra
