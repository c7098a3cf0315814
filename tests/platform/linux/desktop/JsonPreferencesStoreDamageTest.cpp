// Tests of damaged preferences files. No content of the file may crash the program. Loading writes nothing and logs at
// most one line. Saving keeps the values of a valid file, and keeps a damaged file unchanged under another name.

#include <filesystem>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <vector>

#include "tests/platform/linux/desktop/JsonPreferencesStoreFixture.h"
#include "tests/support/Seeds.h"

namespace kovra {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

// All keys that the program stores, and three unknown keys.
const std::string whole = R"({"unknown": {"deep": [1, {"x": "y"}], "escaped": "\u00e9\"\\"},
  "selectedDeviceIDs": ["USB Mouse#1133:49271", "Мышь#1:2"], "big": 12345678901234567890, "isEnabled": false,
  "blockMode": "always", "last": -1.5e-3})";

class JsonPreferencesStoreDamageTest : public PreferencesFixture {
  protected:
    // Loads the text, saves one key, and checks what must hold for any text.
    void loadAndSave(const std::string& stored) {
        writeFile(path_, stored);
        const auto before = traces(path_);
        start();
        ASSERT_EQ(traces(path_), before) << "loading changed the file";
        ASSERT_EQ(text(), stored);
        const Json document = Json::accept(stored) ? Json::parse(stored) : Json();
        const bool sound = document.is_object() && stored.find('\0') == std::string::npos;
        ASSERT_EQ(log_.lines.size(), sound || stored.empty() ? 0U : 1U) << stored;

        store_->set("saved", 1.0);
        ASSERT_EQ(log_.lines.size(), sound || stored.empty() ? 0U : 1U) << "a successful save logs nothing";
        const bool keptAside = !sound && !stored.empty();
        ASSERT_EQ(folder_.names(),
                  keptAside ? (Names{"preferences.json", "preferences.json.damaged"}) : Names{"preferences.json"});
        if (keptAside) {
            ASSERT_EQ(readFile(path_ + ".damaged"), stored);
            fs::remove(path_ + ".damaged");
        }
        Json expected = sound ? document : Json::object();
        expected["saved"] = 1.0;
        ASSERT_EQ(Json::parse(text()), expected);
    }
};

TEST_F(JsonPreferencesStoreDamageTest, TruncatedAtAnyByteAreKept) {
    for (std::size_t size = 0; size <= whole.size(); ++size)
        ASSERT_NO_FATAL_FAILURE(loadAndSave(whole.substr(0, size)));
}

TEST_F(JsonPreferencesStoreDamageTest, WithABrokenByteAnywhereAreKept) {
    for (const char wrong : {'\0', '\xFF', '"', '}', '\\', '\n'}) {
        for (std::size_t i = 0; i < whole.size(); ++i) {
            std::string damaged = whole;
            damaged[i] = wrong;
            ASSERT_NO_FATAL_FAILURE(loadAndSave(damaged));
        }
    }
}

TEST_F(JsonPreferencesStoreDamageTest, ThatAreNotAJsonObjectAreKept) {
    for (const char* text : {"null",
                             "true",
                             "5",
                             "\"{}\"",
                             "[]",
                             "[{}]",
                             " ",
                             "\n",
                             "{} {}",
                             "{}x",
                             "x{}",
                             "{'a': 1}",
                             "{a: 1}",
                             "{\"a\": 1,}",
                             "{\"a\" 1}",
                             "// {}\n{}",
                             "\xFF\xFE{\0}",
                             "\xEF\xBB\xBF",
                             "{\"a\": \"\xC3\"}",
                             "{\"a\": \"\\ud800\"}",
                             "{\"a\": NaN}",
                             "{\"a\": 01}"}) {
        ASSERT_NO_FATAL_FAILURE(loadAndSave(text));
    }
    ASSERT_NO_FATAL_FAILURE(loadAndSave(std::string(4096, '\0')));
    ASSERT_NO_FATAL_FAILURE(loadAndSave(std::string("{}\0{}", 5)));
}

TEST_F(JsonPreferencesStoreDamageTest, WithNumbersBeyondEveryLimitAreKept) {
    ASSERT_NO_FATAL_FAILURE(loadAndSave(R"({"a": 1e400})"));
    ASSERT_NO_FATAL_FAILURE(loadAndSave(R"({"a": 1)" + std::string(300, '0') + "}"));
    ASSERT_NO_FATAL_FAILURE(loadAndSave(R"({"a": -1e-400})"));
}

TEST_F(JsonPreferencesStoreDamageTest, ThatAreEmptyAreNotDamaged) {
    ASSERT_NO_FATAL_FAILURE(loadAndSave(""));
    EXPECT_EQ(text(), "{\n  \"saved\": 1.0\n}\n");
}

TEST_F(JsonPreferencesStoreDamageTest, NestedTooDeeplyAreKeptAndCrashNothing) {
    const auto nested = [](std::size_t depth, const std::string& open, const std::string& close) {
        std::string text = "{\"a\": ";
        for (std::size_t i = 1; i < depth; ++i) text += open;
        text += "1";
        for (std::size_t i = 1; i < depth; ++i) text += close;
        return text + "}";
    };
    ASSERT_NO_FATAL_FAILURE(loadAndSave(nested(64, "[", "]")));
    ASSERT_NO_FATAL_FAILURE(loadAndSave(nested(64, "{\"a\": ", "}")));
    for (const std::size_t depth : {65U, 1000U, 500000U}) {
        for (const std::string& deep : {nested(depth, "[", "]"), nested(depth, "{\"a\":", "}"), std::string(depth, '['),
                                        "{\"a\":" + std::string(depth, '[')}) {
            startWith(deep);
            EXPECT_EQ(log_.lines, std::vector<std::string>{"ble-kovra: файл настроек повреждён (" + path_ +
                                                           "): слишком глубокая вложенность"});
            store_->set("saved", 1.0);
            EXPECT_EQ(text(), "{\n  \"saved\": 1.0\n}\n");
            EXPECT_EQ(readFile(path_ + ".damaged"), deep);
            fs::remove(path_ + ".damaged");
        }
    }
}

TEST_F(JsonPreferencesStoreDamageTest, WithBracketsInTextsAreNotNested) {
    ASSERT_NO_FATAL_FAILURE(loadAndSave("{\"a\": \"\\\"" + std::string(1000, '[') + "\"}"));
    ASSERT_NO_FATAL_FAILURE(loadAndSave("{\"" + std::string(1000, '{') + "\\\\\": 1}"));
}

TEST_F(JsonPreferencesStoreDamageTest, AreKeptUnderAnUnusedName) {
    writeFile(path_ + ".damaged", "first");
    fs::create_directory(path_ + ".damaged-2");
    fs::create_symlink("nowhere", path_ + ".damaged-3");
    startWith("{torn").set("a", 1.0);
    EXPECT_EQ(readFile(path_ + ".damaged"), "first");
    EXPECT_TRUE(fs::is_directory(path_ + ".damaged-2"));
    EXPECT_TRUE(fs::is_symlink(path_ + ".damaged-3"));
    EXPECT_EQ(readFile(path_ + ".damaged-4"), "{torn");
    EXPECT_FALSE(fs::exists(folder_ / "nowhere"));
    EXPECT_EQ(log_.lines.size(), 1U);
}

TEST_F(JsonPreferencesStoreDamageTest, BehindALinkAreKeptInTheirOwnFolder) {
    fs::create_directory(folder_ / "elsewhere");
    writeFile(folder_ / "elsewhere/real.json", "{torn");
    fs::create_symlink("elsewhere/real.json", path_);
    start().set("a", 1.0);
    EXPECT_EQ(folder_.names(), (Names{"elsewhere", "preferences.json"}));
    EXPECT_EQ(readFile(folder_ / "elsewhere/real.json.damaged"), "{torn");
    EXPECT_EQ(readFile(folder_ / "elsewhere/real.json"), "{\n  \"a\": 1.0\n}\n");
}

TEST_F(JsonPreferencesStoreDamageTest, AreLoggedOnceThoughManySavesFollow) {
    startWith("[1, 2}");
    for (int i = 0; i < 10; ++i) store_->set("a", static_cast<double>(i));
    EXPECT_EQ(log_.lines,
              std::vector<std::string>{"ble-kovra: файл настроек повреждён (" + path_ + "): ошибка JSON, байт 6"});
    EXPECT_EQ(folder_.names(), (Names{"preferences.json", "preferences.json.damaged"}));
}

TEST_F(JsonPreferencesStoreDamageTest, OfTheWrongTypesAreKeptWhenAnotherKeyIsSaved) {
    const std::vector<std::string> values{"null", "true", "0",  "-1e3", "\"\"",       "\"always\"",
                                          "[]",   "[1]",  "{}", "[[]]", "[\"a\", 5]", "{\"a\": [null]}"};
    for (const std::string key : {"selectedDeviceIDs", "isEnabled", "blockMode"}) {
        for (const std::string& value : values) {
            ASSERT_NO_FATAL_FAILURE(loadAndSave("{\"" + key + "\": " + value + "}"));
            EXPECT_EQ(text(), "{\"" + key + "\": " + value + ",\n  \"saved\": 1.0}");
        }
    }
}

// Returns the text with one to four random edits: bytes changed, inserted, removed or repeated.
std::string mutated(std::string text, std::mt19937& random) {
    const auto below = [&](std::size_t limit) { return static_cast<std::size_t>(random() % limit); };
    constexpr std::string_view marks = "{}[]:,\"\\ \n\t0-.eEtnu";
    for (std::size_t edits = 1 + below(4); edits > 0 && !text.empty(); --edits) {
        const std::size_t at = below(text.size());
        switch (below(5)) {
            case 0:
                text[at] = static_cast<char>(static_cast<unsigned char>(below(256)));
                break;
            case 1:
                text[at] = marks[below(marks.size())];
                break;
            case 2:
                text.insert(at, 1, marks[below(marks.size())]);
                break;
            case 3:
                text.erase(at, 1 + below(8));
                break;
            default:
                text.insert(below(text.size()), text.substr(at, 1 + below(40)));
                break;
        }
    }
    return text;
}

TEST_F(JsonPreferencesStoreDamageTest, OfAnyKindAreKept) {
    constexpr int rounds = 2000;
    for (const std::uint32_t seed : fixedAndFreshSeeds(2)) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        for (int round = 0; round < rounds; ++round) {
            ASSERT_NO_FATAL_FAILURE(loadAndSave(mutated(whole, random))) << "round " << round;
        }
    }
}

}  // namespace
}  // namespace kovra
