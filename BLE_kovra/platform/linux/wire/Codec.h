#pragma once

#include <chrono>
#include <concepts>
#include <cstddef>
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

// Converts values of a type to JSON and back. read() returns false if the JSON does not represent such a value.
template <typename T>
struct Codec;

// The members of the JSON object for a type, used for both directions: a tuple of required() and optional() members.
template <typename T>
constexpr auto members = nullptr;

// The name that identifies a type among the alternatives of a variant.
template <typename T>
constexpr const char* nameOf = nullptr;

// The names of the values of an enumeration, which are numbered from 0.
template <typename T>
constexpr auto namesOf = nullptr;

// Returns null if `object` is not a JSON object or has no such member.
inline const Json* findMember(const Json& object, const char* name) {
    if (!object.is_object()) return nullptr;
    const auto member = object.find(name);
    return member == object.end() ? nullptr : &*member;
}

template <>
struct Codec<bool> {
    static Json write(bool value) { return value; }
    static bool read(const Json& json, bool& value) {
        if (!json.is_boolean()) return false;
        value = json.get<bool>();
        return true;
    }
};

template <std::integral T>
struct Codec<T> {
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

// JSON has finite numbers only. A number that is not finite is written as null, which read() rejects.
template <>
struct Codec<double> {
    static Json write(double value) { return value; }
    static bool read(const Json& json, double& value) {
        if (!json.is_number()) return false;
        value = json.get<double>();
        return true;
    }
};

template <>
struct Codec<std::string> {
    static Json write(const std::string& value) { return value; }
    static bool read(const Json& json, std::string& value) {
        if (!json.is_string()) return false;
        value = json.get<std::string>();
        return true;
    }
};

// Negative values are invalid, so that differences never overflow.
template <>
struct Codec<std::chrono::milliseconds> {
    static Json write(std::chrono::milliseconds value) { return value.count(); }
    static bool read(const Json& json, std::chrono::milliseconds& value) {
        std::int64_t count = 0;
        if (!Codec<std::int64_t>::read(json, count) || count < 0) return false;
        value = std::chrono::milliseconds(count);
        return true;
    }
};

template <typename T>
    requires std::is_enum_v<T>
struct Codec<T> {
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
struct Codec<std::vector<T>> {
    static Json write(const std::vector<T>& list) {
        Json json = Json::array();
        for (const T& each : list) json.push_back(Codec<T>::write(each));
        return json;
    }
    // The list must be empty, as in each message before it is read.
    static bool read(const Json& json, std::vector<T>& list) {
        if (!json.is_array()) return false;
        list.reserve(json.size());
        for (const Json& each : json) {
            if (!Codec<T>::read(each, list.emplace_back())) return false;
        }
        return true;
    }
};

// Encodes the active alternative as an object. The name of the alternative is the additional member `is`.
template <typename... Kinds>
struct Codec<std::variant<Kinds...>> {
    using Any = std::variant<Kinds...>;
    static Json write(const Any& any) {
        return std::visit(
            []<typename Kind>(const Kind& value) {
                Json json = Codec<Kind>::write(value);
                json["is"] = nameOf<Kind>;
                return json;
            },
            any);
    }
    static bool read(const Json& json, Any& any) {
        const Json* is = findMember(json, "is");
        return is != nullptr && (readAs<Kinds>(*is, json, any) || ...);
    }

  private:
    template <typename Kind>
    static bool readAs(const Json& is, const Json& json, Any& any) {
        return is == nameOf<Kind> && Codec<Kind>::read(json, any.template emplace<Kind>());
    }
};

template <typename T>
    requires(!std::is_same_v<decltype(members<T>), const std::nullptr_t>)
struct Codec<T> {
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
struct Required {
    const char* name;
    V T::* place;

    void write(const T& value, Json& json) const { json[name] = Codec<V>::write(value.*place); }
    bool read(const Json& json, T& value) const {
        const Json* member = findMember(json, name);
        return member != nullptr && Codec<V>::read(*member, value.*place);
    }
};

// A member that the JSON object omits if it is empty.
template <typename T, typename V>
struct Optional {
    const char* name;
    V T::* place;

    void write(const T& value, Json& json) const {
        if (!(value.*place).empty()) json[name] = Codec<V>::write(value.*place);
    }
    bool read(const Json& json, T& value) const {
        const Json* member = findMember(json, name);
        return member == nullptr || Codec<V>::read(*member, value.*place);
    }
};

template <typename T, typename V>
struct Optional<T, std::optional<V>> {
    const char* name;
    std::optional<V> T::* place;

    void write(const T& value, Json& json) const {
        if (value.*place) json[name] = Codec<V>::write(*(value.*place));
    }
    bool read(const Json& json, T& value) const {
        const Json* member = findMember(json, name);
        return member == nullptr || Codec<V>::read(*member, (value.*place).emplace());
    }
};

template <typename T, typename V>
constexpr Required<T, V> required(const char* name, V T::* place) {
    return {name, place};
}

template <typename T, typename V>
constexpr Optional<T, V> optional(const char* name, V T::* place) {
    return {name, place};
}

}  // namespace kovra
