#include "BLE_kovra/platform/linux/wire/Encoding.h"

#include <algorithm>
#include <tuple>

#include "BLE_kovra/platform/linux/wire/MenuForm.h"
#include "BLE_kovra/platform/linux/wire/ViewForm.h"

namespace kovra {

template <>
constexpr const char* nameOf<ShowTray> = "showTray";
template <>
constexpr auto members<ShowTray> = std::tuple(ifAny("image", &ShowTray::image),
                                              always("template", &ShowTray::imageIsTemplate),
                                              always("toolTip", &ShowTray::toolTip), always("menu", &ShowTray::menu));

template <>
constexpr const char* nameOf<HideTray> = "hideTray";
template <>
constexpr auto members<HideTray> = std::tuple();

template <>
constexpr const char* nameOf<PopUpMenu> = "popUpMenu";
template <>
constexpr auto members<PopUpMenu> = std::tuple(always("x", &PopUpMenu::x), always("y", &PopUpMenu::y),
                                               always("asked", &PopUpMenu::asked), always("menu", &PopUpMenu::menu));

template <>
constexpr auto members<WindowPlace> = std::tuple(ifAny("position", &WindowPlace::position),
                                                 always("minimised", &WindowPlace::isMinimised),
                                                 always("scroll", &WindowPlace::scroll));

template <>
constexpr const char* nameOf<ShowWindow> = "showWindow";
template <>
constexpr auto members<ShowWindow> =
    std::tuple(always("title", &ShowWindow::title), always("styleMask", &ShowWindow::styleMask),
               always("contentSize", &ShowWindow::contentSize), always("front", &ShowWindow::front),
               ifAny("activationToken", &ShowWindow::activationToken), always("place", &ShowWindow::place),
               always("heard", &ShowWindow::heard), always("content", &ShowWindow::content));

template <>
constexpr const char* nameOf<HideWindow> = "hideWindow";
template <>
constexpr auto members<HideWindow> = std::tuple();

template <>
constexpr auto members<Alert> = std::tuple(always("messageText", &Alert::messageText),
                                           always("informativeText", &Alert::informativeText),
                                           always("buttons", &Alert::buttons));

template <>
constexpr auto members<ShowAlerts::Open> = std::tuple(always("number", &ShowAlerts::Open::number),
                                                      ifAny("activationToken", &ShowAlerts::Open::activationToken),
                                                      always("alert", &ShowAlerts::Open::alert));

template <>
constexpr const char* nameOf<ShowAlerts> = "showAlerts";
template <>
constexpr auto members<ShowAlerts> = std::tuple(always("alerts", &ShowAlerts::alerts));

template <>
constexpr const char* nameOf<ItemChosen> = "itemChosen";
template <>
constexpr auto members<ItemChosen> = std::tuple(always("position", &ItemChosen::position));

template <>
constexpr const char* nameOf<MenuClosed> = "menuClosed";
template <>
constexpr auto members<MenuClosed> = std::tuple(always("asked", &MenuClosed::asked),
                                                ifAny("chosen", &MenuClosed::chosen));

// What a control was changed to: the one is a JSON boolean, the other a text.
template <>
struct Form<std::variant<bool, std::string>> {
    using Value = std::variant<bool, std::string>;
    static Json write(const Value& value) {
        return std::visit([](const auto& each) { return Json(each); }, value);
    }
    static bool read(const Json& json, Value& value) {
        if (json.is_boolean()) return Form<bool>::read(json, value.emplace<bool>());
        return Form<std::string>::read(json, value.emplace<std::string>());
    }
};

template <>
constexpr const char* nameOf<ControlChanged> = "controlChanged";
template <>
constexpr auto members<ControlChanged> = std::tuple(always("number", &ControlChanged::number),
                                                    always("path", &ControlChanged::path),
                                                    always("value", &ControlChanged::value));

template <>
constexpr const char* nameOf<LinkFollowed> = "linkFollowed";
template <>
constexpr auto members<LinkFollowed> = std::tuple(always("path", &LinkFollowed::path));

template <>
constexpr const char* nameOf<WindowPlaced> = "windowPlaced";
template <>
constexpr auto members<WindowPlaced> = std::tuple(always("place", &WindowPlaced::place));

template <>
constexpr const char* nameOf<WindowClosed> = "windowClosed";
template <>
constexpr auto members<WindowClosed> = std::tuple(always("front", &WindowClosed::front),
                                                  always("place", &WindowClosed::place));

template <>
constexpr const char* nameOf<AlertAnswered> = "alertAnswered";
template <>
constexpr auto members<AlertAnswered> = std::tuple(always("number", &AlertAnswered::number),
                                                   ifAny("button", &AlertAnswered::button));

template <>
constexpr const char* nameOf<QuitWanted> = "quitWanted";
template <>
constexpr auto members<QuitWanted> = std::tuple();

namespace {

// Of what nests: deeper than any window, and far from the end of the stack.
constexpr int deepest = 100;

bool isDeeperThan(int levels, const Json& json) {
    if (!json.is_structured()) return false;
    if (levels == 0) return true;
    return std::any_of(json.begin(), json.end(), [&](const Json& each) { return isDeeperThan(levels - 1, each); });
}

template <typename Message>
std::string encoded(const Message& message) {
    return Form<Message>::write(message).dump(-1, ' ', false, Json::error_handler_t::replace) + '\n';
}

template <typename Message>
std::optional<Message> decoded(std::string_view line) {
    const Json json = Json::parse(line, nullptr, false);
    Message message;
    if (isDeeperThan(deepest, json) || !Form<Message>::read(json, message)) return std::nullopt;
    return message;
}

}  // namespace

std::string encode(const ToWindow& message) { return encoded(message); }
std::string encode(const ToResident& message) { return encoded(message); }

std::optional<ToWindow> decodeToWindow(std::string_view line) { return decoded<ToWindow>(line); }
std::optional<ToResident> decodeToResident(std::string_view line) { return decoded<ToResident>(line); }

}  // namespace kovra
