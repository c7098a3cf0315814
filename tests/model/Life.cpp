#include "tests/model/Life.h"

#include <array>
#include <utility>

namespace kovra::model {

namespace {

using namespace std::chrono_literals;
using Kind = Action::Kind;

const std::vector<DeviceDescription>& models() {
    static const std::vector<DeviceDescription> all{
        aMouse("apple"),
        aMouse("APPLE"),                               // another key, but sorted as equal
        aMouse("apple").ids(0x046D, 1),                // another key, but the same name
        aMouse("apple").ids(1, 23),                    // the key differs from the next one
        aMouse("apple").ids(12, 3),                    // only in the place of the colon
        aMouse("Banana").interfaces(2),                //
        aMouse("banana").ids(7, std::nullopt),         //
        aMouse("Zebra %s %n #1:2").interfaces(3),      //
        aMouse("Мышь").withoutRegistryEntry(),         //
        aMouse("").ids(std::nullopt, std::nullopt),    // an empty name
        aMouse("cherry").ids(-1, 0x7FFFFFFFFFFFFFFF),  //
        aNamelessDevice(),                             //
        aNamelessDevice().ids(std::nullopt, 9).interfaces(2).withoutRegistryEntry(),
        aMouse("Unknown device"),  // in English the key equals that of a nameless device
    };
    return all;
}

constexpr std::array reasons{"Нет места на устройстве", "100 % full: %s %n", "", "Permission denied"};

}  // namespace

Beginning Life::beginning() {
    struct Language {
        std::vector<std::string> preferred;
        std::string unknown;
    };
    static const std::vector<Language> languages{
        {{}, "Unknown device"},
        {{"en-GB", "ru-RU"}, "Unknown device"},
        {{"pt-BR", "ru-RU"}, "Unknown device"},
        {{"ru-RU", "en"}, "Неизвестное устройство"},
        {{"uk"}, "Невідомий пристрій"},
        {{"FR-ca", "de"}, "Appareil inconnu"},
        {{"de-AT"}, "Unbekanntes Gerät"},
        {{"es-419"}, "Dispositivo desconocido"},
    };
    const Language language = oneOf(languages);
    unknown_ = language.unknown;
    for (int i = 0; i < 4; ++i) favorites_.push_back(oneOf(models()));

    Beginning beginning{language.preferred, {}, oneIn(2)};
    const auto texts = [&](int count) {
        PreferenceArray array;
        for (int i = 0; i < count; ++i) array.emplace_back(key());
        return array;
    };
    const auto store = [&](const char* name, const std::vector<PreferenceValue>& values) {
        if (!oneIn(4)) beginning.stored.emplace(name, oneOf(values));
    };
    PreferenceArray mixed = texts(1);
    mixed.emplace_back(5.0);
    const std::string twice = key();
    store("selectedDeviceIDs", {texts(3), texts(0), mixed, PreferenceArray{twice, twice}, twice, true});
    store("isEnabled", {true, true, false, 1.0, 0.0, std::string("YES"), std::string("no"), std::string(" -07"),
                        std::string(), PreferenceArray{true}, OtherPreference{}});
    store("blockMode", {std::string("always"), std::string("onDevice"), std::string("Always"), std::string(), 1.0});
    return beginning;
}

std::vector<Action> Life::actions(int count) {
    std::vector<Action> actions{relaunch()};
    while (actions.size() < static_cast<std::size_t>(count)) actions.push_back(next());
    return actions;
}

// Returns a random action. A kind with a greater weight is drawn more often; releaseDelegate is drawn separately.
Action Life::next() {
    static constexpr std::array<std::pair<Kind, int>, 22> weights{{
        {Kind::attach, 150},    {Kind::detach, 200},     {Kind::removeUnknown, 12}, {Kind::attachAgain, 12},
        {Kind::rename, 15},     {Kind::advance, 110},    {Kind::advanceToWake, 80}, {Kind::stall, 20},
        {Kind::runOneTurn, 90}, {Kind::run, 70},         {Kind::select, 50},        {Kind::enable, 35},
        {Kind::setMode, 25},    {Kind::pressHotKey, 25}, {Kind::failNext, 20},      {Kind::failAlways, 5},
        {Kind::recover, 10},    {Kind::subscribe, 35},   {Kind::unsubscribe, 15},   {Kind::evaluate, 10},
        {Kind::quit, 5},        {Kind::relaunch, 12},
    }};
    static constexpr int total = [] {
        int sum = 0;
        for (const auto& [kind, weight] : weights) sum += weight;
        return sum;
    }();
    if (oneIn(300)) return Action{Kind::releaseDelegate};
    int ticket = static_cast<int>(below(static_cast<std::uint64_t>(total)));
    for (const auto& [kind, weight] : weights) {
        ticket -= weight;
        if (ticket < 0) return fromOutside(kind);
    }
    return Action{Kind::run};
}

Action Life::fromOutside(Kind kind) {
    static constexpr std::array<std::chrono::nanoseconds, 10> times{0ns, 1ns,          500ms, 1s, 1999999999ns,
                                                                    2s,  2000000001ns, 1s,    3s, 100ms};
    static constexpr std::array<std::chrono::nanoseconds, 4> offsets{-1ns, 0ns, 0ns, 1ns};
    Action action{kind};
    action.number = attached_.empty() || oneIn(8) ? 1 + below(interfaces_ + 2) : oneOf(attached_);
    switch (kind) {
        case Kind::attach:
            action.device = device();
            for (int i = 0; i < action.device.interfaceCount; ++i) {
                attached_.push_back(++interfaces_);
                devices_.push_back(action.device);
            }
            break;
        case Kind::detach:
            std::erase(attached_, action.number);
            if (action.number <= interfaces_) lastRemoved_ = devices_[action.number - 1];
            break;
        case Kind::rename:
            action.text = device().product.value_or("renamed");
            break;
        case Kind::advance:
        case Kind::stall:
            action.time = oneOf(times);
            break;
        case Kind::advanceToWake:
            action.time = oneOf(offsets);
            break;
        case Kind::failNext:
            action.number = 1 + below(3);
            action.text = oneOf(reasons);
            break;
        case Kind::failAlways:
            action.text = oneOf(reasons);
            break;
        case Kind::select:
        case Kind::enable:
        case Kind::setMode:
            return choice();
        case Kind::subscribe:
            return subscription(2);
        case Kind::unsubscribe:
            action.number = 1 + below(subscribers_ + 1);
            break;
        case Kind::relaunch:
            return relaunch();
        default:
            break;
    }
    return action;
}

Action Life::choice() {
    Action action{oneOf(std::array{Kind::select, Kind::enable, Kind::setMode})};
    action.keys = keys();
    action.truth = action.kind == Kind::enable ? !oneIn(3) : oneIn(3);
    return action;
}

Action Life::subscription(int depth) {
    Action action{Kind::subscribe};
    action.number = ++subscribers_;
    action.property = static_cast<Property>(below(5));
    action.times = 1 + static_cast<int>(below(3));
    action.truth = oneIn(4);
    action.inner.push_back(reaction(depth));
    return action;
}

// Returns what a subscriber does while a change is announced and not yet stored.
Action Life::reaction(int depth) {
    const std::uint64_t draw = below(24);
    if (draw < 10) return choice();
    if (draw < 12) return fromOutside(Kind::attach);
    if (draw < 15) return fromOutside(Kind::detach);
    if (draw < 16) return fromOutside(Kind::pressHotKey);
    if (draw < 17) return fromOutside(Kind::evaluate);
    if (draw < 20) return fromOutside(Kind::unsubscribe);
    if (draw < 21 && oneIn(4)) return Action{Kind::releaseDelegate};
    return depth > 0 ? subscription(depth - 1) : choice();
}

Action Life::relaunch() {
    Action action{Kind::relaunch};
    while (oneIn(3)) action.inner.push_back(subscription(1));
    return action;
}

DeviceDescription Life::model() { return oneIn(4) ? oneOf(models()) : oneOf(favorites_); }

DeviceDescription Life::device() {
    if (lastRemoved_ && oneIn(2)) return *lastRemoved_;
    DeviceDescription device = model();
    if (oneIn(4)) device.interfaceCount = 1 + static_cast<int>(below(3));
    if (oneIn(8)) device.registered = !device.registered;
    return device;
}

std::string Life::key() { return oneIn(10) ? "ghost#0:0" : model().key(unknown_); }

std::set<std::string> Life::keys() {
    std::set<std::string> keys;
    while (!oneIn(4)) keys.insert(key());
    return keys;
}

}  // namespace kovra::model
