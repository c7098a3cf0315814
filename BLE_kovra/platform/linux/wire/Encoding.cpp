#include "BLE_kovra/platform/linux/wire/Encoding.h"

#include <algorithm>
#include <tuple>

#include "BLE_kovra/platform/linux/wire/MenuCodec.h"
#include "BLE_kovra/platform/linux/wire/ViewCodec.h"

namespace kovra {

template <>
constexpr const char* nameOf<ShowTray> = "showTray";
template <>
constexpr auto members<ShowTray> =
    std::tuple(optional("image", &ShowTray::image), required("template", &ShowTray::imageIsTemplate),
               required("toolTip", &ShowTray::toolTip), required("menu", &ShowTray::menu),
               required("ink", &ShowTray::ink), optional("outline", &ShowTray::outline));

template <>
constexpr const char* nameOf<HideTray> = "hideTray";
template <>
constexpr auto members<HideTray> = std::tuple();

template <>
constexpr const char* nameOf<PopUpMenu> = "popUpMenu";
template <>
constexpr auto members<PopUpMenu> =
    std::tuple(required("x", &PopUpMenu::x), required("y", &PopUpMenu::y), required("asked", &PopUpMenu::asked),
               required("menu", &PopUpMenu::menu));

template <>
constexpr auto members<WindowPlace> =
    std::tuple(optional("position", &WindowPlace::position), required("minimised", &WindowPlace::isMinimised),
               required("scroll", &WindowPlace::scroll));

template <>
constexpr const char* nameOf<ShowWindow> = "showWindow";
template <>
constexpr auto members<ShowWindow> =
    std::tuple(required("title", &ShowWindow::title), required("styleMask", &ShowWindow::styleMask),
               required("contentSize", &ShowWindow::contentSize), required("front", &ShowWindow::front),
               optional("activationToken", &ShowWindow::activationToken), required("place", &ShowWindow::place),
               required("heard", &ShowWindow::acknowledged), required("content", &ShowWindow::content));

template <>
constexpr const char* nameOf<HideWindow> = "hideWindow";
template <>
constexpr auto members<HideWindow> = std::tuple();

template <>
constexpr auto members<Alert> =
    std::tuple(required("messageText", &Alert::messageText), required("informativeText", &Alert::informativeText),
               required("buttons", &Alert::buttons));

template <>
constexpr auto members<ShowAlerts::Open> = std::tuple(required("number", &ShowAlerts::Open::number),
                                                      optional("activationToken", &ShowAlerts::Open::activationToken),
                                                      required("alert", &ShowAlerts::Open::alert));

template <>
constexpr const char* nameOf<ShowAlerts> = "showAlerts";
template <>
constexpr auto members<ShowAlerts> =
    std::tuple(required("alerts", &ShowAlerts::alerts), optional("front", &ShowAlerts::front));

template <>
constexpr const char* nameOf<Ping> = "ping";
template <>
constexpr auto members<Ping> = std::tuple(required("number", &Ping::number));

template <>
constexpr const char* nameOf<ItemChosen> = "itemChosen";
template <>
constexpr auto members<ItemChosen> = std::tuple(required("position", &ItemChosen::position));

template <>
constexpr const char* nameOf<MenuClosed> = "menuClosed";
template <>
constexpr auto members<MenuClosed> =
    std::tuple(required("asked", &MenuClosed::asked), optional("chosen", &MenuClosed::chosen));

// The new value of a control is a JSON boolean or string.
template <>
struct Codec<std::variant<bool, std::string>> {
    using Value = std::variant<bool, std::string>;
    static Json write(const Value& value) {
        return std::visit([](const auto& each) { return Json(each); }, value);
    }
    static bool read(const Json& json, Value& value) {
        if (json.is_boolean()) return Codec<bool>::read(json, value.emplace<bool>());
        return Codec<std::string>::read(json, value.emplace<std::string>());
    }
};

template <>
constexpr const char* nameOf<ControlChanged> = "controlChanged";
template <>
constexpr auto members<ControlChanged> =
    std::tuple(required("number", &ControlChanged::number), required("path", &ControlChanged::path),
               required("value", &ControlChanged::value));

template <>
constexpr const char* nameOf<LinkFollowed> = "linkFollowed";
template <>
constexpr auto members<LinkFollowed> = std::tuple(required("path", &LinkFollowed::path));

template <>
constexpr const char* nameOf<WindowPlaced> = "windowPlaced";
template <>
constexpr auto members<WindowPlaced> = std::tuple(required("place", &WindowPlaced::place));

template <>
constexpr const char* nameOf<WindowClosed> = "windowClosed";
template <>
constexpr auto members<WindowClosed> =
    std::tuple(required("front", &WindowClosed::front), required("place", &WindowClosed::place));

template <>
constexpr const char* nameOf<AlertAnswered> = "alertAnswered";
template <>
constexpr auto members<AlertAnswered> =
    std::tuple(required("number", &AlertAnswered::number), optional("button", &AlertAnswered::button));

template <>
constexpr const char* nameOf<QuitWanted> = "quitWanted";
template <>
constexpr auto members<QuitWanted> = std::tuple();

template <>
constexpr const char* nameOf<SettingsWanted> = "settingsWanted";
template <>
constexpr auto members<SettingsWanted> = std::tuple();

template <>
constexpr const char* nameOf<Pong> = "pong";
template <>
constexpr auto members<Pong> = std::tuple(required("number", &Pong::number));

namespace {

// Deeper than the content of any window, and shallow enough for the recursion.
constexpr int maxDepth = 100;

bool nestsDeeperThan(int levels, const Json& json) {
    if (!json.is_structured()) return false;
    if (levels == 0) return true;
    return std::any_of(json.begin(), json.end(), [&](const Json& each) { return nestsDeeperThan(levels - 1, each); });
}

template <typename Message>
std::string encoded(const Message& message) {
    return Codec<Message>::write(message).dump(-1, ' ', false, Json::error_handler_t::replace) + '\n';
}

template <typename Message>
std::optional<Message> decoded(std::string_view line) {
    const Json json = Json::parse(line, nullptr, false);
    Message message;
    if (nestsDeeperThan(maxDepth, json) || !Codec<Message>::read(json, message)) return std::nullopt;
    return message;
}

}  // namespace

std::string encode(const ToWindow& message) { return encoded(message); }
std::string encode(const ToResident& message) { return encoded(message); }

std::optional<ToWindow> decodeToWindow(std::string_view line) { return decoded<ToWindow>(line); }
std::optional<ToResident> decodeToResident(std::string_view line) { return decoded<ToResident>(line); }

}  // namespace kovra
