#pragma once

#include <array>
#include <optional>
#include <tuple>

#include "BLE_kovra/platform/View.h"
#include "BLE_kovra/platform/linux/wire/Codec.h"

namespace kovra {

template <>
inline constexpr auto namesOf<Alignment> = std::array{"leading", "center"};
template <>
inline constexpr auto namesOf<Font> = std::array{"standard", "headline", "body", "subheadline", "caption", "caption2"};
template <>
inline constexpr auto namesOf<Color> = std::array{"primary", "secondary", "green", "gray"};
template <>
inline constexpr auto namesOf<Stack::Axis> = std::array{"horizontal", "vertical"};

// The actions of controls are not encoded.

template <>
inline constexpr const char* nameOf<Text> = "text";
template <>
inline constexpr auto members<Text> = std::tuple(required("content", &Text::content));

template <>
inline constexpr const char* nameOf<Circle> = "circle";
template <>
inline constexpr auto members<Circle> =
    std::tuple(required("fill", &Circle::fill), required("opacity", &Circle::opacity));

template <>
inline constexpr const char* nameOf<Toggle> = "toggle";
template <>
inline constexpr auto members<Toggle> = std::tuple(required("on", &Toggle::isOn));

template <>
inline constexpr auto members<Picker::Option> =
    std::tuple(required("title", &Picker::Option::title), required("tag", &Picker::Option::tag));
template <>
inline constexpr const char* nameOf<Picker> = "picker";
template <>
inline constexpr auto members<Picker> =
    std::tuple(required("title", &Picker::title), required("options", &Picker::options),
               required("selection", &Picker::selection));

template <>
inline constexpr const char* nameOf<Link> = "link";
template <>
inline constexpr auto members<Link> =
    std::tuple(required("title", &Link::title), required("destination", &Link::destination));

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
inline constexpr auto members<Stack> = std::tuple(
    required("axis", &Stack::axis), required("alignment", &Stack::alignment), optional("spacing", &Stack::spacing));

template <>
inline constexpr const char* nameOf<ScrollView> = "scrollView";
template <>
inline constexpr auto members<ScrollView> = std::tuple();

template <>
inline constexpr const char* nameOf<FontModifier> = "font";
template <>
inline constexpr auto members<FontModifier> =
    std::tuple(required("font", &FontModifier::font), required("bold", &FontModifier::bold));

template <>
inline constexpr const char* nameOf<ForegroundColor> = "foregroundColor";
template <>
inline constexpr auto members<ForegroundColor> = std::tuple(required("color", &ForegroundColor::color));

template <>
inline constexpr const char* nameOf<Padding> = "padding";
template <>
inline constexpr auto members<Padding> =
    std::tuple(required("horizontal", &Padding::horizontal), required("vertical", &Padding::vertical));

// A maximum length of a frame. It may be infinite, which a JSON number cannot express.
struct LargestLength {
    const char* name;
    std::optional<double> Frame::* place;

    void write(const Frame& frame, Json& json) const {
        if (frame.*place == Frame::unbounded)
            json[name] = unbounded;
        else
            plain().write(frame, json);
    }
    bool read(const Json& json, Frame& frame) const {
        const Json* member = findMember(json, name);
        if (member == nullptr || *member != unbounded) return plain().read(json, frame);
        frame.*place = Frame::unbounded;
        return true;
    }

  private:
    static constexpr const char* unbounded = "unbounded";
    Optional<Frame, std::optional<double>> plain() const { return {name, place}; }
};

template <>
inline constexpr const char* nameOf<Frame> = "frame";
template <>
inline constexpr auto members<Frame> = std::tuple(
    optional("width", &Frame::width), optional("height", &Frame::height), LargestLength{"maxWidth", &Frame::maxWidth},
    LargestLength{"maxHeight", &Frame::maxHeight}, required("alignment", &Frame::alignment));

template <>
inline constexpr const char* nameOf<FixedSize> = "fixedSize";
template <>
inline constexpr auto members<FixedSize> =
    std::tuple(required("horizontal", &FixedSize::horizontal), required("vertical", &FixedSize::vertical));

template <>
inline constexpr auto members<View> = std::tuple(required("kind", &View::kind), optional("children", &View::children),
                                                 optional("modifiers", &View::modifiers), optional("id", &View::id));

}  // namespace kovra
