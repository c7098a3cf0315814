#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "BLE_kovra/platform/linux/desktop/JsonObjectText.h"
#include "BLE_kovra/platform/linux/desktop/JsonPreferencesStore.h"
#include "tests/fakes/FakeLog.h"
#include "tests/fuzz/Promise.h"
#include "tests/support/posix/TempFolder.h"

// A file of preferences that somebody else has written, and what a save makes of it.

namespace {

using namespace kovra;
using namespace std::chrono_literals;
using Json = nlohmann::json;

constexpr int deepest = 64;

int depthOf(const Json& json) {
    int depth = 0;
    for (const Json& each : json) {
        if (each.is_structured()) depth = std::max(depth, depthOf(each));
    }
    return depth + 1;
}

// Returns the object, or nothing if the text must count as damaged.
std::optional<Json> objectIn(std::string_view text) {
    if (text.find('\0') != std::string_view::npos) return std::nullopt;
    Json json = Json::parse(text, nullptr, false);
    if (json.is_discarded() || !json.is_object() || depthOf(json) > deepest) return std::nullopt;
    return json;
}

void checkValue(const std::optional<PreferenceValue>& value, const Json& json) {
    fuzz::promise(value.has_value() == !json.is_null(), "a value is there unless it is null");
    if (!value) return;
    const bool* truth = std::get_if<bool>(&*value);
    fuzz::promise(json.is_boolean() == (truth != nullptr) && (truth == nullptr || json == Json(*truth)),
                  "truths are kept");
    const auto* number = std::get_if<double>(&*value);
    fuzz::promise(json.is_number() == (number != nullptr), "numbers are kept");
    const auto* text = std::get_if<std::string>(&*value);
    fuzz::promise(json.is_string() == (text != nullptr) && (text == nullptr || json == Json(*text)), "texts are kept");
    const auto* array = std::get_if<PreferenceArray>(&*value);
    fuzz::promise(json.is_array() == (array != nullptr) && (array == nullptr || array->size() == json.size()),
                  "arrays are kept");
}

void checkLog(const FakeLog& log, std::size_t lines) {
    fuzz::promise(log.lines.size() == lines, "a damaged file is logged in one line, and nothing else is");
    for (const std::string& line : log.lines) {
        fuzz::promise(line.find('\n') == std::string::npos && line.size() < 1000, "a log line is one short line");
    }
}

// Setting a member changes its value and no other byte of the text.
void checkMember(const std::string& text, const Json& object, const std::string& key) {
    const std::string quoted = Json(key).dump();
    const std::string value = "\"a value that occurs nowhere else\"";
    if (text.find(value) != std::string::npos) return;
    const std::string changed = withMember(text, quoted, value);
    const std::size_t begin = changed.rfind(value);
    fuzz::promise(begin != std::string::npos, "the value is in the text");
    Json expected = object;
    expected[key] = Json::parse(value);
    fuzz::promise(Json::parse(changed, nullptr, false) == expected, "the object has the value and nothing else is new");
    const std::string_view head = std::string_view(changed).substr(0, begin);
    const std::string_view tail = std::string_view(changed).substr(begin + value.size());
    if (object.contains(key)) {
        fuzz::promise(text.starts_with(head) && text.ends_with(tail) && head.size() + tail.size() <= text.size(),
                      "every other byte stays");
        const std::string old = text.substr(head.size(), text.size() - head.size() - tail.size());
        fuzz::promise(Json::parse(old, nullptr, false) == object[key], "the old value is replaced");
    } else {
        fuzz::promise(changed.size() <= text.size() + quoted.size() + value.size() + 10, "a few bytes are added");
    }
    fuzz::promise(withMember(changed, quoted, "1") == withMember(text, quoted, "1"), "the last value counts");
}

std::string savedBy(const std::string& path, FakeLog& log) {
    JsonPreferencesStore store(path, log);
    store.set("kEnabled", false);
    store.set("kSelected", PreferenceArray{std::string("Mouse \xFF\"\n#1:2"), 1.5, true});
    fuzz::promise(store.waitUntilSaved(60s), "a save ends");
    return readFile(path);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const TempFolder folder(TempFolder::Where::memory);
    const std::string path = folder / "preferences.json";
    const std::string kept = path + ".damaged";
    const std::string text(fuzz::textOf(data, size));
    writeFile(path, text);
    std::filesystem::remove(kept);
    const std::optional<Json> object = objectIn(text);
    const Json members = object.value_or(Json::object());
    const bool isDamaged = !object && !text.empty();

    {
        FakeLog log;
        const JsonPreferencesStore store(path, log);
        checkLog(log, isDamaged ? 1 : 0);
        for (const auto& [key, value] : members.items()) checkValue(store.object(key), value);
        fuzz::promise(readFile(path) == text && folder.names().size() == 1, "loading writes nothing");
    }
    if (object) {
        checkMember(text, members, "kEnabled");
        for (const auto& [key, value] : members.items()) checkMember(text, members, key);
    }
    FakeLog log;
    const Json saved = Json::parse(savedBy(path, log), nullptr, false);
    checkLog(log, isDamaged ? 1 : 0);
    Json expected = members;
    expected["kEnabled"] = false;
    expected["kSelected"] = Json::array({"Mouse \xEF\xBF\xBD\"\n#1:2", 1.5, true});
    fuzz::promise(saved == expected, "a save replaces what was set, and keeps the rest");
    fuzz::promise(isDamaged == std::filesystem::exists(kept), "a damaged file is kept, no other one is");
    fuzz::promise(!isDamaged || readFile(kept) == text, "a damaged file is kept as it was");
    return 0;
}
