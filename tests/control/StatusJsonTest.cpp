#include "BLE_kovra/control/StatusJson.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "tests/control/Cases.h"

namespace kovra::control {
namespace {

TEST(StatusJsonTest, HasEveryFact) {
    EXPECT_EQ(statusJson(mutedByMouse()),
              R"({"answer":"muted","reason":"deviceConnected",)"
              R"("sentence":"The trackpad is muted: Logitech MX Master 3S is connected.","version":"0.3.0",)"
              R"("asker":"anna","remote":false,"atMachine":"anna",)"
              R"("trackpads":[{"input":"input17","name":"SYNA8004:00 06CB:CD8B Touchpad","kind":"builtIn",)"
              R"("muted":true,"mutedByService":null,"since":null,"serviceMayMute":true,"error":null}],)"
              R"("application":{"contact":"answered","error":null,"processes":[{"pid":1234,"user":"anna"}],)"
              R"("version":"0.3.0","enabled":true,"mode":"onDevice","muting":true,"lastWritten":"on",)"
              R"("chosen":[{"name":"Logitech MX Master 3S","presence":"connected"}],"hotKey":"ours",)"
              R"("combination":"Ctrl+Alt+T","tray":"panel","watcher":null,"sessionBusFailures":[],)"
              R"("systemBusFailures":[]},)"
              R"("flag":{"word":"on","written":1763899327,"writer":"anna","error":null},)"
              R"("service":{"state":"running","unitState":"enabled","error":null}})");
}

// Expects these words for the values of an enumeration, which is one of the facts.
template <typename Value>
void expectWords(const Facts& facts, Value& fact, const std::string& name, const std::vector<std::string>& words) {
    for (std::size_t value = 0; value < words.size(); ++value) {
        fact = static_cast<Value>(value);
        EXPECT_NE(statusJson(facts).find('"' + name + "\":\"" + words[value] + '"'), std::string::npos) << words[value];
    }
}

TEST(StatusJsonTest, NamesEachState) {
    Facts facts = mutedByMouse();
    expectWords(facts, facts.application.hotKey, "hotKey", {"ours", "taken", "onRequest", "unavailable", "unknown"});
    expectWords(facts, facts.application.tray, "tray", {"panel", "embedded", "none", "unknown"});
    expectWords(facts, facts.application.chosen[0].presence, "presence", {"connected", "inGrace", "away"});
    expectWords(facts, facts.service.state, "state",
                {"running", "starting", "stopped", "failed", "missing", "unknown"});
    expectWords(facts, facts.pads[0].kind, "kind", {"builtIn", "twin", "other"});
    expectWords(facts, facts.application.contact, "contact",
                {"answered", "tooOld", "silent", "foreign", "absent", "noBus"});
}

TEST(StatusJsonTest, HasNullForWhatIsNotKnown) {
    Facts facts = askedBy(boris, mutedByMouse());
    facts.flag = {.error = "Permission denied"};
    facts.seat = {};
    facts.service = {Service::State::unknown, "Access denied", ""};
    facts.pads[0].isMuted.reset();
    const std::string json = statusJson(facts);
    for (const char* part :
         {R"("answer":"unknown")", R"("atMachine":null)", R"("muted":null)", R"("contact":"absent")",
          R"("enabled":null,"mode":null,"muting":null,"lastWritten":null,"chosen":null,"hotKey":null)",
          R"("flag":{"word":null,"written":null,"writer":null,"error":"Permission denied"})",
          R"("service":{"state":"unknown","unitState":null,"error":"Access denied"})"}) {
        EXPECT_NE(json.find(part), std::string::npos) << part << " is missing in " << json;
    }
}

TEST(StatusJsonTest, EscapesWhatJsonCannotContain) {
    EXPECT_EQ(jsonString("a\"b\\c"), R"("a\"b\\c")");
    EXPECT_EQ(jsonString("\n\x1B\x7F"), "\"\\u000a\\u001b\\u007f\"");
    EXPECT_EQ(jsonString("Übung 鼠"), "\"Übung 鼠\"");
}

// U+009B begins a command to the terminal, as Escape and a bracket do.
TEST(StatusJsonTest, EscapesWhatControlsATerminal) {
    EXPECT_EQ(jsonString("\xC2\x9B"
                         "2J\xC2\x80\xC2\x9F"),
              "\"\\u009b2J\\u0080\\u009f\"");
    EXPECT_EQ(jsonString("\xC2\xA0\xC3\x9B"), "\"\xC2\xA0\xC3\x9B\"");
}

}  // namespace
}  // namespace kovra::control
