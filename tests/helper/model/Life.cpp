#include "tests/helper/model/Life.h"

#include <array>
#include <cstddef>
#include <deque>
#include <string>
#include <utility>

namespace kovra::helper::model {

namespace {

using namespace std::chrono_literals;
using Kind = Action::Kind;

class Life {
  public:
    explicit Life(std::uint64_t seed) : random_(seed), isCalm_(oneIn(4)) {}

    std::vector<Action> actions(int count) {
        std::vector<Action> actions{{.kind = Kind::sitDown}, {.kind = Kind::startApplication}};
        while (static_cast<int>(actions.size()) < count) {
            actions.push_back(next());
            end(actions.back());
        }
        return actions;
    }

  private:
    int below(int limit) { return static_cast<int>(random_() % static_cast<std::uint64_t>(limit)); }
    bool oneIn(int times) { return below(times) == 0; }

    // Lets what an action has begun end after up to 20 further ones.
    void end(const Action& begun) {
        Action end = begun;
        end.truth = false;
        if (begun.kind == Kind::stop) end.kind = Kind::resume;
        if (begun.kind == Kind::stopService) end.kind = Kind::startService;
        if (begun.kind == Kind::link) end.kind = Kind::unlink;
        if (begun.kind == Kind::plugUngranted) end.kind = Kind::grant;
        if (begun.truth || end.kind != begun.kind) ends_.emplace_back(1 + below(20), end);
        follow(begun);
    }

    // Lets what makes a fault matter follow at once, as often as not.
    void follow(const Action& begun) {
        if (oneIn(2)) return;
        const Action pause{.kind = Kind::advance, .time = oneIn(2) ? 6s : 11s};
        if (begun.kind == Kind::refuseToWork && begun.truth) {
            static constexpr std::array kinds{Kind::leave, Kind::killApplication, Kind::kill, Kind::terminate};
            next_ = {action(kinds.at(static_cast<std::size_t>(below(kinds.size())))), pause};
        } else if (begun.kind == Kind::refuseToWork || begun.kind == Kind::grant) {
            next_ = {pause};
        } else if (begun.kind == Kind::takeDescriptors) {
            Action after{.kind = Kind::sitDown, .user = below(3)};
            if (!begun.truth) after = {.kind = Kind::advance, .time = 65s};
            next_ = {after};
        }
    }

    Action next() {
        if (!next_.empty()) {
            const Action action = next_.front();
            next_.pop_front();
            return action;
        }
        for (auto& [left, end] : ends_) {
            if (left-- > 0) continue;
            const Action action = end;
            std::erase_if(ends_, [&](const auto& entry) { return entry.first < 0; });
            return action;
        }
        static constexpr std::array<std::pair<Kind, int>, 47> weights{{
            {Kind::advance, 200},
            {Kind::write, 300},
            {Kind::keepOpen, 20},
            {Kind::writeKept, 35},
            {Kind::remove, 8},
            {Kind::replace, 12},
            {Kind::link, 8},
            {Kind::linkElsewhere, 8},
            {Kind::unlink, 14},
            {Kind::dropLeft, 6},
            {Kind::moveFolder, 3},
            {Kind::openFolder, 3},
            {Kind::startApplication, 75},
            {Kind::killApplication, 28},
            {Kind::renameApplication, 8},
            {Kind::startOther, 6},
            {Kind::sitDown, 90},
            {Kind::leave, 9},
            {Kind::greet, 9},
            {Kind::comeRemotely, 6},
            {Kind::closeSession, 8},
            {Kind::showTerminal, 20},
            {Kind::repeatSession, 12},
            {Kind::plug, 60},
            {Kind::plugUngranted, 16},
            {Kind::grant, 12},
            {Kind::unplug, 40},
            {Kind::touch, 25},
            {Kind::refuseToWork, 16},
            {Kind::refuseToPause, 8},
            {Kind::inhibit, 12},
            {Kind::fillDisk, 5},
            {Kind::protectDisk, 5},
            {Kind::takeWatches, 5},
            {Kind::takeDescriptors, 8},
            {Kind::fillRun, 5},
            {Kind::fillQueue, 8},
            {Kind::breakLogin, 6},
            {Kind::setClock, 8},
            {Kind::kill, 12},
            {Kind::killAtCall, 35},
            {Kind::stop, 10},
            {Kind::resume, 14},
            {Kind::terminate, 6},
            {Kind::stopService, 5},
            {Kind::startService, 12},
            {Kind::releaseByHand, 6},
        }};
        static constexpr int total = [] {
            int sum = 0;
            for (const auto& [kind, weight] : weights) sum += weight;
            return sum;
        }();
        if (oneIn(200)) return {.kind = Kind::startSecond};
        if (oneIn(12)) {
            static constexpr std::array kinds{Kind::write,   Kind::write,           Kind::writeKept,
                                              Kind::sitDown, Kind::killApplication, Kind::startApplication,
                                              Kind::plug,    Kind::unplug,          Kind::leave,
                                              Kind::remove,  Kind::touch,           Kind::link};
            const Action inner = action(kinds.at(static_cast<std::size_t>(below(kinds.size()))));
            return {.kind = Kind::interrupt, .number = 1 + below(12), .inner = {inner}};
        }
        int ticket = below(total);
        for (const auto& [kind, weight] : weights) {
            ticket -= weight;
            if (ticket < 0) return isCalm_ && isAFault(kind) ? Action{.kind = Kind::touch} : action(kind);
        }
        return {};
    }

    static bool isAFault(Kind kind) {
        return (kind >= Kind::refuseToWork && kind <= Kind::breakLogin) || kind == Kind::moveFolder ||
               kind == Kind::openFolder || kind == Kind::plugUngranted;
    }

    Action action(Kind kind) {
        static constexpr std::array<std::chrono::nanoseconds, 16> times{
            1ns, 1ms, 10ms, 49ms, 50ms, 51ms, 100ms, 450ms, 500ms, 1s, 1s, 2s, 3s, 6s, 11s, 30s};
        static constexpr std::array<const char*, 10> texts{"on",  "on",  "on",   "on", "off",
                                                           "off", "off", "on\n", "",   "no, the flag is off"};
        Action action{.kind = kind};
        // Mostly the person who sat down last.
        action.user = oneIn(6) ? below(3) : person_;
        action.number = below(8);
        action.truth = kind >= Kind::refuseToWork && kind <= Kind::breakLogin;
        switch (kind) {
            case Kind::advance:
                action.time = times.at(static_cast<std::size_t>(below(16)));
                if (oneIn(40)) action.time = ends_.empty() ? 301s : 65s;
                break;
            case Kind::write:
            case Kind::writeKept:
                action.text = texts.at(static_cast<std::size_t>(below(10)));
                break;
            case Kind::sitDown:
                action.user = oneIn(3) ? below(3) : person_;
                person_ = action.user;
                break;
            case Kind::showTerminal:
                action.number = oneIn(3) ? 2 : 1;
                break;
            case Kind::plug:
            case Kind::plugUngranted:
            case Kind::unplug:
            case Kind::refuseToWork:
            case Kind::inhibit:
                if (!oneIn(3)) action.number = below(3);
                break;
            case Kind::setClock:
                action.time = oneIn(3) ? 0s : oneIn(2) ? std::chrono::seconds(3600) : std::chrono::seconds(-3600);
                break;
            case Kind::killAtCall:
                action.number = 1 + below(oneIn(3) ? 40 : 12);
                break;
            default:
                break;
        }
        return action;
    }

    std::mt19937_64 random_;
    const bool isCalm_;
    int person_ = 0;
    std::deque<Action> next_;
    std::vector<std::pair<int, Action>> ends_;  // after how many further actions they come
};

}  // namespace

std::vector<Action> lifeOf(std::uint64_t seed, int count) { return Life(seed).actions(count); }

}  // namespace kovra::helper::model
