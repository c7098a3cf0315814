#include "tests/helper/model/Comparison.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "tests/helper/model/Action.h"
#include "tests/helper/model/Life.h"
#include "tests/helper/model/ReferenceModel.h"
#include "tests/helper/model/World.h"

namespace kovra::helper::model {

namespace {

using Kind = Action::Kind;

struct Difference {
    std::size_t step;
    std::string what;
};

// One play of a life.
class Play {
  public:
    Play(const std::vector<Action>& actions, bool hasTerminals) : actions_(actions) {
        world_.machine.shownTerminal = hasTerminals ? 1 : 0;
        world_.machine.step = [this](Time latest) { step(latest); };
    }

    std::optional<Difference> run(Census* census) {
        try {
            world_.live();
        } catch (const LifeIsOver&) {
            Machine::isInside = false;
        }
        if (census != nullptr) {
            for (const auto& [what, times] : model_.census) (*census)[what] += times;
            (*census)["killed at a call"] += world_.machine.kills;
            (*census)["interrupted at a call"] += interruptions_;
            (*census)["daemons"] += world_.machine.lives;
            (*census)["releases"] += world_.releases;
        }
        return difference_;
    }

  private:
    void step(Time latest) {
        if (const std::string wrong = model_.check(); !wrong.empty()) difference_ = {next_ == 0 ? 0 : next_ - 1, wrong};
        if (difference_) throw LifeIsOver();
        if (until_ > world_.machine.now) {
            world_.machine.now = std::min(until_, latest);
            return;
        }
        if (next_ == actions_.size()) throw LifeIsOver();
        const Action action = actions_[next_++];
        if (action.kind == Kind::advance) {
            until_ = world_.machine.now + action.time;
        } else if (action.kind == Kind::interrupt) {
            world_.machine.callsBefore = action.number;
            world_.machine.interruption = [this, inner = action.inner.at(0)] {
                model_.note(inner, world_.perform(inner), true);
                ++interruptions_;
            };
        } else {
            const bool hadEffect = world_.perform(action);
            model_.note(action, hadEffect, false);
        }
    }

    const std::vector<Action>& actions_;
    World world_;
    ReferenceModel model_{world_};
    std::size_t next_ = 0;
    Time until_{0};
    int interruptions_ = 0;
    std::optional<Difference> difference_;
};

std::optional<Difference> play(const std::vector<Action>& actions, std::uint64_t seed, Census* census) {
    return Play(actions, seed % 2 == 0).run(census);
}

// Removes actions that the failure does not need, in ever smaller pieces.
std::vector<Action> shortened(std::vector<Action> actions, std::uint64_t seed) {
    for (std::size_t piece = actions.size() / 2; piece > 0; piece /= 2) {
        for (std::size_t at = 0; at + piece <= actions.size();) {
            std::vector<Action> shorter = actions;
            const auto from = shorter.begin() + static_cast<std::ptrdiff_t>(at);
            shorter.erase(from, from + static_cast<std::ptrdiff_t>(piece));
            if (play(shorter, seed, nullptr))
                actions = std::move(shorter);
            else
                at += piece;
        }
    }
    return actions;
}

}  // namespace

std::optional<std::string> compare(std::uint64_t seed, int steps, Census& census) {
    std::vector<Action> actions = lifeOf(seed, steps);
    const std::optional<Difference> found = play(actions, seed, &census);
    if (!found) return std::nullopt;

    actions.resize(std::min(found->step + 1, actions.size()));
    const std::vector<Action> shortest = shortened(actions, seed);
    const Difference difference = play(shortest, seed, nullptr).value_or(*found);
    std::string report = "seed " + std::to_string(seed) + ", step " + std::to_string(found->step) + ":\n  " +
                         found->what + "\nThe shortest life found that differs, on a machine " +
                         (seed % 2 == 0 ? "with" : "without") + " virtual terminals:\n";
    for (const Action& action : shortest) report += "  " + describe(action) + "\n";
    return report + "  " + difference.what;
}

}  // namespace kovra::helper::model
