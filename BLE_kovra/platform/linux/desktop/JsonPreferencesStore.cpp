#include "BLE_kovra/platform/linux/desktop/JsonPreferencesStore.h"

#include <cerrno>
#include <cstring>
#include <nlohmann/json.hpp>
#include <utility>

#include "BLE_kovra/platform/SystemLog.h"
#include "BLE_kovra/platform/Utf8.h"
#include "BLE_kovra/platform/linux/desktop/JsonObjectText.h"
#include "BLE_kovra/platform/linux/desktop/SmallTextFile.h"
#include "BLE_kovra/platform/linux/desktop/XdgEnvironment.h"

namespace kovra {

namespace {

using Json = nlohmann::json;

// Deeper than any real preferences, and shallow enough for recursive functions such as fromJson().
constexpr std::size_t deepestNesting = 64;

// The parsed text. If it is invalid, `problem` is the reason in the language of the log; otherwise `problem` is empty.
struct Parsed {
    Json object;
    std::string problem;
};

Parsed parse(const std::string& text) {
    // The parser would treat a NUL byte as the end of the text and ignore the rest.
    if (text.find('\0') != std::string::npos) return {{}, "нулевой байт"};
    if (isNestedDeeperThan(deepestNesting, text)) return {{}, "слишком глубокая вложенность"};
    try {
        Json document = Json::parse(text);
        if (!document.is_object()) return {{}, "не объект JSON"};
        return {std::move(document), {}};
    } catch (const Json::parse_error& error) {
        return {{}, "ошибка JSON, байт " + std::to_string(error.byte)};
    } catch (const Json::exception&) {
        return {{}, "число вне пределов"};
    }
}

PreferenceValue fromJson(const Json& json) {
    if (json.is_boolean()) return json.get<bool>();
    if (json.is_number()) return json.get<double>();
    if (json.is_string()) return json.get<std::string>();
    if (!json.is_array()) return OtherPreference();
    PreferenceArray array;
    array.reserve(json.size());
    for (const Json& element : json) array.push_back(fromJson(element));
    return array;
}

Json toJson(const PreferenceValue& value) {
    if (const auto* truth = std::get_if<bool>(&value)) return *truth;
    if (const auto* number = std::get_if<double>(&value)) return *number;
    if (const auto* text = std::get_if<std::string>(&value)) return *text;
    if (std::holds_alternative<OtherPreference>(value)) return Json::object();
    Json array = Json::array();
    for (const PreferenceValue& element : std::get<PreferenceArray>(value)) array.push_back(toJson(element));
    return array;
}

// Never throws, even for invalid UTF-8, which is stored as U+FFFD.
std::string textOf(const Json& json) { return json.dump(-1, ' ', false, Json::error_handler_t::replace); }

}  // namespace

std::string standardPreferencesPath() {
    const std::string folder = userConfigFolder();
    return folder.empty() ? folder : folder + "/ble-kovra/preferences.json";
}

// The file, and the values that could not be saved yet.
class JsonPreferencesStore::File {
  public:
    explicit File(std::string path) : file_(std::move(path)) {}

    // Returns 0 or an errno value.
    int read(std::string& text) const { return file_.read(text); }
    // Stores the text that was loaded. save() uses it if the file is missing, empty or damaged by then.
    void remember(std::string text) { lastText_ = std::move(text); }
    // Saves these values and those that could not be saved before. Returns 0 or an errno value.
    int save(const BackgroundSaves::Values& values);

  private:
    SmallTextFile file_;
    BackgroundSaves::Values unsaved_;
    std::string lastText_;  // the valid text that was last loaded or saved; empty if there was none
};

JsonPreferencesStore::JsonPreferencesStore(std::string path, SystemLog& log)
    : path_(std::move(path)),
      log_(log),
      file_(std::make_shared<File>(path_)),
      saves_(
          [file = file_](const BackgroundSaves::Values& values) { return file->save(values); },
          [this](int error) {
              log_.log("ble-kovra: не удалось сохранить настройки (" + validUtf8(path_) + "): " + std::strerror(error));
          }) {
    const auto logProblem = [&](const char* what, const std::string& reason) {
        log_.log(std::string("ble-kovra: ") + what + " (" + validUtf8(path_) + "): " + reason);
    };
    std::string text;
    if (const int error = file_->read(text)) {
        if (error != ENOENT) logProblem("не удалось прочитать настройки", std::strerror(error));
        return;
    }
    if (text.empty()) return;
    const Parsed parsed = parse(text);
    if (!parsed.problem.empty()) {
        logProblem("файл настроек повреждён", parsed.problem);
        return;
    }
    for (const auto& [key, value] : parsed.object.items()) {
        if (!value.is_null()) values_.emplace(key, fromJson(value));
    }
    file_->remember(std::move(text));
}

JsonPreferencesStore::~JsonPreferencesStore() {
    if (!waitUntilSaved(timeout))
        log_.log("ble-kovra: настройки (" + validUtf8(path_) + ") не сохранены за 1 с, программа их не дожидается");
}

std::optional<PreferenceValue> JsonPreferencesStore::object(std::string_view key) const {
    const auto found = values_.find(key);
    return found == values_.end() ? std::nullopt : std::optional(found->second);
}

void JsonPreferencesStore::set(std::string_view key, const PreferenceValue& value) {
    values_.insert_or_assign(std::string(key), value);
    saves_.begin(key, value);
}

int JsonPreferencesStore::File::save(const BackgroundSaves::Values& values) {
    for (const auto& [key, value] : values) unsaved_.insert_or_assign(key, value);
    std::string text;
    const int error = file_.read(text);
    if (error != 0 && error != ENOENT) return error;
    auto old = SmallTextFile::Old::replaced;
    if (!text.empty() && !parse(text).problem.empty()) {
        old = SmallTextFile::Old::keptAside;
        text.clear();
    }
    // If the file is missing, empty or damaged, start from the last valid text.
    if (text.empty()) text = lastText_.empty() ? "{}\n" : lastText_;
    for (const auto& [key, value] : unsaved_) text = withMember(text, textOf(key), textOf(toJson(value)));
    if (const int failure = file_.replace(text, old)) return failure;
    unsaved_.clear();
    lastText_ = std::move(text);
    return 0;
}

}  // namespace kovra
