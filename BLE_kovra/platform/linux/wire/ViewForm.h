#pragma once

#include <array>
#include <optional>
#include <tuple>

#include "BLE_kovra/platform/View.h"
#include "BLE_kovra/platform/linux/wire/Form.h"

namespace kovra {

template <>
inline constexpr auto namesOf<Alignment> = std::array{"leading", "center"};
template <>
inline constexpr auto namesOf<Font> = std::array{"standard", "headline", "body", "subheadline", "caption", "caption2"};
template <>
inline constexpr auto namesOf<Color> = std::array{"primary", "secondary", "green", "gray"};
template <>
inline constexpr auto namesOf<Stack::Axis> = std::array{"horizontal", "vertical"};

// Of what is interactive the actions do not cross.

template <>
inline constexpr const char* nameOf<Text> = "text";
template <>
inline constexpr auto members<Text> = std::tuple(always("content", &Text::content));

template <>
inline constexpr const char* nameOf<Circle> = "circle";
template <>
inline constexpr auto members<Circle> = std::tuple(always("fill", &Circle::fill), always("opacity", &Circle::opacity));

template <>
inline constexpr const char* nameOf<Toggle> = "toggle";
template <>
inline constexpr auto members<Toggle> = std::tuple(always("on", &Toggle::isOn));

template <>
inline constexpr auto members<Picker::Option> = std::tuple(always("title", &Picker::Option::title),
                                                           always("tag", &Picker::Option::tag));
template <>
inline constexpr const char* nameOf<Picker> = "picker";
template <>
inline constexpr auto members<Picker> = std::tuple(always("title", &Picker::title), always("options", &Picker::options),
                                                   always("selection", &Picker::selection));

template <>
inline constexpr const char* nameOf<Link> = "link";
template <>
inline constexpr auto members<Link> = std::tuple(always("title", &Link::title),
                                                 always("destination", &Link::destination));

template <>
inline constexpr const char* nameOf<Divider> = "divider";
template <>
inline constexpr auto members<Divider> = std::tuple();

template <>
inline constexpr const char* nameOf<Spacer> = "spacer";
template <>
inline constexpr auto members<Spacer> = std::tuple();

template <>
inline constexpr const char* nameOf<Stack> = "stack";
template <>
inline constexpr auto members<Stack> = std::tuple(always("axis", &Stack::axis), always("alignment", &Stack::alignment),
                                                  ifAny("spacing", &Stack::spacing));

template <>
inline constexpr const char* nameOf<ScrollView> = "scrollView";
template <>
inline constexpr auto members<ScrollView> = std::tuple();

template <>
inline constexpr const char* nameOf<FontModifier> = "font";
template <>
inline constexpr auto members<FontModifier> = std::tuple(always("font", &FontModifier::font),
                                                         always("bold", &FontModifier::bold));

template <>
inline constexpr const char* nameOf<ForegroundColor> = "foregroundColor";
template <>
inline constexpr auto members<ForegroundColor> = std::tuple(always("color", &ForegroundColor::color));

template <>
inline constexpr const char* nameOf<Padding> = "padding";
template <>
inline constexpr auto members<Padding> = std::tuple(always("horizontal", &Padding::horizontal),
                                                    always("vertical", &Padding::vertical));

// A length that a frame may leave without a bound, which is no number in JSON.
struct LargestLength {
    const char* name;
    std::optional<double> Frame::*place;

    void write(const Frame& frame, Json& json) const {
        if (frame.*place == Frame::unbounded)
            json[name] = unbounded;
        else
            plain().write(frame, json);
    }
    bool read(const Json& json, Frame& frame) const {
        const Json* member = found(json, name);
        if (member == nullptr || *member != unbounded) return plain().read(json, frame);
        frame.*place = Frame::unbounded;
        return true;
    }

  private:
    static constexpr const char* unbounded = "unbounded";
    IfAny<Frame, std::optional<double>> plain() const { return {name, place}; }
};

template <>
inline constexpr const char* nameOf<Frame> = "frame";
template <>
inline constexpr auto members<Frame> = std::tuple(ifAny("width", &Frame::width), ifAny("height", &Frame::height),
                                                  LargestLength{"maxWidth", &Frame::maxWidth},
                                                  LargestLength{"maxHeight", &Frame::maxHeight},
                                                  always("alignment", &Frame::alignment));

template <>
inline constexpr const char* nameOf<FixedSize> = "fixedSize";
template <>
inline constexpr auto members<FixedSize> = std::tuple(always("horizontal", &FixedSize::horizontal),
                                                      always("vertical", &FixedSize::vertical));

template <>
inline constexpr auto members<View> = std::tuple(always("kind", &View::kind), ifAny("children", &View::children),
                                                 ifAny("modifiers", &View::modifiers), ifAny("id", &View::id));

}  // namespace kovra
