#pragma once

#include <chrono>
#include <concepts>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace kovra {

using Json = nlohmann::json;

// How values of a type become JSON and come back. Reading is total: it returns whether it was what it had to be.
template <typename T>
struct Form;

// What a type's object holds, told once for both ways: a tuple of what always() and ifAny() make.
template <typename T>
constexpr auto members = nullptr;

// What tells a type from the others of a variant.
template <typename T>
constexpr const char* nameOf = nullptr;

// The names of an enumeration's values, which count from 0.
template <typename T>
constexpr auto namesOf = nullptr;

// The member of this name; null where there is none, or no object.
inline const Json* found(const Json& object, const char* name) {
    if (!object.is_object()) return nullptr;
    const auto member = object.find(name);
    return member == object.end() ? nullptr : &*member;
}

template <>
struct Form<bool> {
    static Json write(bool value) { return value; }
    static bool read(const Json& json, bool& value) {
        if (!json.is_boolean()) return false;
        value = json.get<bool>();
        return true;
    }
};

template <std::integral T>
struct Form<T> {
    static Json write(T value) { return value; }
    static bool read(const Json& json, T& value) {
        if (json.is_number_unsigned()) return take(json.get<std::uint64_t>(), value);
        return json.is_number_integer() && take(json.get<std::int64_t>(), value);
    }

  private:
    static bool take(auto number, T& value) {
        if (!std::in_range<T>(number)) return false;
        value = static_cast<T>(number);
        return true;
    }
};

// A finite number, for JSON has no others.
template <>
struct Form<double> {
    static Json write(double value) { return value; }
    static bool read(const Json& json, double& value) {
        if (!json.is_number()) return false;
        value = json.get<double>();
        return true;
    }
};

template <>
struct Form<std::string> {
    static Json write(const std::string& value) { return value; }
    static bool read(const Json& json, std::string& value) {
        if (!json.is_string()) return false;
        value = json.get<std::string>();
        return true;
    }
};

// None is negative, so that differences of two never overflow.
template <>
struct Form<std::chrono::milliseconds> {
    static Json write(std::chrono::milliseconds value) { return value.count(); }
    static bool read(const Json& json, std::chrono::milliseconds& value) {
        std::int64_t count = 0;
        if (!Form<std::int64_t>::read(json, count) || count < 0) return false;
        value = std::chrono::milliseconds(count);
        return true;
    }
};

template <typename T>
requires std::is_enum_v<T>
struct Form<T> {
    static Json write(T value) { return namesOf<T>.at(static_cast<std::size_t>(value)); }
    static bool read(const Json& json, T& value) {
        for (std::size_t i = 0; i < namesOf<T>.size(); ++i) {
            if (json != namesOf<T>[i]) continue;
            value = static_cast<T>(i);
            return true;
        }
        return false;
    }
};

template <typename T>
struct Form<std::vector<T>> {
    static Json write(const std::vector<T>& list) {
        Json json = Json::array();
        for (const T& each : list) json.push_back(Form<T>::write(each));
        return json;
    }
    static bool read(const Json& json, std::vector<T>& list) {
        if (!json.is_array()) return false;
        list.clear();
        list.reserve(json.size());
        for (const Json& each : json) {
            if (!Form<T>::read(each, list.emplace_back())) return false;
        }
        return true;
    }
};

// One of several types: the object of its value, which says besides what it is.
template <typename... Kinds>
struct Form<std::variant<Kinds...>> {
    using Any = std::variant<Kinds...>;
    static Json write(const Any& any) {
        return std::visit(
            []<typename Kind>(const Kind& value) {
                Json json = Form<Kind>::write(value);
                json["is"] = nameOf<Kind>;
                return json;
            },
            any);
    }
    static bool read(const Json& json, Any& any) {
        const Json* is = found(json, "is");
        return is != nullptr && (readAs<Kinds>(*is, json, any) || ...);
    }

  private:
    template <typename Kind>
    static bool readAs(const Json& is, const Json& json, Any& any) {
        return is == nameOf<Kind> && Form<Kind>::read(json, any.template emplace<Kind>());
    }
};

template <typename T>
requires(!std::is_same_v<decltype(members<T>), const std::nullptr_t>) struct Form<T> {
    static Json write(const T& value) {
        Json json = Json::object();
        std::apply([&](const auto&... member) { (member.write(value, json), ...); }, members<T>);
        return json;
    }
    static bool read(const Json& json, T& value) {
        return json.is_object() &&
               std::apply([&](const auto&... member) { return (member.read(json, value) && ...); }, members<T>);
    }
};

template <typename T, typename V>
struct Always {
    const char* name;
    V T::*place;

    void write(const T& value, Json& json) const { json[name] = Form<V>::write(value.*place); }
    bool read(const Json& json, T& value) const {
        const Json* member = found(json, name);
        return member != nullptr && Form<V>::read(*member, value.*place);
    }
};

// Left out where it is empty.
template <typename T, typename V>
struct IfAny {
    const char* name;
    V T::*place;

    void write(const T& value, Json& json) const {
        if (!(value.*place).empty()) json[name] = Form<V>::write(value.*place);
    }
    bool read(const Json& json, T& value) const {
        const Json* member = found(json, name);
        return member == nullptr || Form<V>::read(*member, value.*place);
    }
};

template <typename T, typename V>
struct IfAny<T, std::optional<V>> {
    const char* name;
    std::optional<V> T::*place;

    void write(const T& value, Json& json) const {
        if (value.*place) json[name] = Form<V>::write(*(value.*place));
    }
    bool read(const Json& json, T& value) const {
        const Json* member = found(json, name);
        return member == nullptr || Form<V>::read(*member, (value.*place).emplace());
    }
};

template <typename T, typename V>
constexpr Always<T, V> always(const char* name, V T::*place) {
    return {name, place};
}

template <typename T, typename V>
constexpr IfAny<T, V> ifAny(const char* name, V T::*place) {
    return {name, place};
}

}  // namespace kovra
