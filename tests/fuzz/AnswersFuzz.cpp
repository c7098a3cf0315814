#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "BLE_kovra/control/Checklist.h"
#include "BLE_kovra/control/Facts.h"
#include "BLE_kovra/control/Printable.h"
#include "BLE_kovra/control/StatusJson.h"
#include "BLE_kovra/control/StatusText.h"
#include "BLE_kovra/control/Verdict.h"
#include "BLE_kovra/platform/Utf8.h"
#include "BLE_kovra/platform/linux/control/HelperService.h"
#include "tests/fuzz/Promise.h"

// What ble-kovractl prints about facts of any content. The names in them come from devices, accounts, panels and the
// other program on the bus.

namespace {

using namespace kovra;
using namespace kovra::control;
using Json = nlohmann::json;

class Inventor {
  public:
    explicit Inventor(FuzzedDataProvider& input) : input_(input) {}

    Facts facts() {
        Facts facts;
        facts.version = text();
        facts.asker = person();
        facts.isRemote = truth();
        facts.desktops = texts();
        while (truth() && facts.pads.size() < 3) facts.pads.push_back(pad());
        facts.padsError = text();
        facts.application = application();
        facts.service = {one(Service::State::unknown), text(), text()};
        facts.flag = {.isReadable = truth(),
                      .error = text(),
                      .word = input_.PickValueInArray({"", "on", "off"}),
                      .written = perhaps(moment()),
                      .writer = perhaps(person())};
        facts.seat = {truth(), perhaps(person())};
        return facts;
    }
    std::string text() { return validUtf8(input_.ConsumeRandomLengthString(16)); }

  private:
    bool truth() { return input_.ConsumeBool(); }
    template <typename T>
    std::optional<T> perhaps(T value) {
        return truth() ? std::optional(std::move(value)) : std::nullopt;
    }
    // Returns a value of the enumeration, of which this is the last one.
    template <typename T>
    T one(T last) {
        return static_cast<T>(input_.ConsumeIntegralInRange(0, static_cast<int>(last)));
    }
    std::vector<std::string> texts() {
        std::vector<std::string> texts;
        while (truth() && texts.size() < 3) texts.push_back(text());
        return texts;
    }
    Person person() { return {input_.ConsumeIntegralInRange(999U, 1001U), text()}; }
    Moment moment() { return momentOf(input_.ConsumeIntegral<std::int64_t>()); }
    Pad pad() {
        Pad pad;
        pad.input = text();
        pad.name = text();
        pad.kind = one(Pad::Kind::other);
        pad.isMuted = perhaps(truth());
        pad.error = text();
        pad.isRecorded = perhaps(truth());
        pad.recordedSince = perhaps(moment());
        pad.mayServiceMute = perhaps(truth());
        pad.properties = {{text(), text()}};
        return pad;
    }
    Application application() {
        Application application;
        application.contact = one(Application::Contact::noBus);
        application.error = text();
        while (truth() && application.processes.size() < 3)
            application.processes.push_back({input_.ConsumeIntegral<int>(), person()});
        application.version = text();
        application.isEnabled = truth();
        application.isAlways = truth();
        application.isMuting = truth();
        application.lastWritten = text();
        while (truth() && application.chosen.size() < 3)
            application.chosen.push_back({text(), one(ChosenDevice::Presence::away)});
        application.hotKey = one(Application::HotKey::unknown);
        application.combination = text();
        application.tray = one(Application::Tray::unknown);
        application.watcher = text();
        application.sessionBusFailures = texts();
        application.systemBusFailures = texts();
        return application;
    }

    FuzzedDataProvider& input_;
};

bool hasControlCharacter(std::string_view text) {
    bool found = false;
    while (!text.empty()) {
        const Utf8Character character = decodeUtf8(text);
        found |= character.valid &&
                 (character.codePoint < 0x20 || (character.codePoint >= 0x7F && character.codePoint < 0xA0));
        text.remove_prefix(character.length);
    }
    return found;
}

void checkLines(const std::vector<std::string>& lines, const char* what) {
    for (const std::string& line : lines) fuzz::promise(!hasControlCharacter(line), what);
}

void checkJson(const Facts& facts) {
    const std::string text = statusJson(facts);
    fuzz::promise(!hasControlCharacter(text), "the JSON is one line");
    const Json json = Json::parse(text, nullptr, false);
    fuzz::promise(json.is_object(), "the JSON is an object");
    fuzz::promise(json["version"] == Json(facts.version) && json["trackpads"].size() == facts.pads.size(),
                  "it has the facts");
    for (std::size_t i = 0; i < facts.pads.size(); ++i)
        fuzz::promise(json["trackpads"][i]["name"] == Json(facts.pads[i].name), "a name in the JSON is the whole name");
}

// The kernel's attribute alone decides.
void checkVerdict(const Facts& facts) {
    const auto answer = verdictOf(facts).answer;
    const auto muted = [](const Pad& pad) { return pad.kind == Pad::Kind::builtIn && pad.isMuted == true; };
    const auto works = [](const Pad& pad) { return pad.kind != Pad::Kind::builtIn || pad.isMuted == false; };
    const bool isMuted = std::ranges::any_of(facts.pads, muted);
    fuzz::promise(answer != Verdict::Answer::muted || isMuted, "a pad that counts as muted is muted");
    fuzz::promise(answer != Verdict::Answer::works || std::ranges::all_of(facts.pads, works), "a pad that works works");
}

void checkBytes(std::string_view bytes) {
    const std::string shown = printable(bytes);
    fuzz::promise(!hasControlCharacter(shown), "nothing controls the terminal");
    fuzz::promise(hasControlCharacter(bytes) || shown == bytes, "what is harmless is shown as it is");
    const std::string valid = validUtf8(bytes);
    fuzz::promise(isUtf8(valid) && isUtf8(printable(valid)), "a text stays a text");
    fuzz::promise(Json::parse(jsonString(valid), nullptr, false) == Json(valid), "a JSON string means its text");
    static_cast<void>(writerIn(bytes));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    checkBytes(fuzz::textOf(data, size));
    FuzzedDataProvider input(data, size);
    const Facts facts = Inventor(input).facts();
    checkJson(facts);
    checkVerdict(facts);
    checkLines(statusText(facts), "each line of the status is one line");
    const std::vector<Check> checks = checklistOf(facts);
    checkLines(checklistText(checks), "each line of the checklist is one line");
    const int code = exitCodeOf(checks);
    fuzz::promise(code >= 0 && code <= 2, "the exit code says what is right");
    return 0;
}
