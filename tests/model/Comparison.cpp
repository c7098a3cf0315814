#include "tests/model/Comparison.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <vector>

#include "tests/model/Action.h"
#include "tests/model/Life.h"
#include "tests/model/Program.h"
#include "tests/model/ReferenceModel.h"

namespace kovra::model {

namespace {

using std::chrono::nanoseconds;

struct Difference {
    std::size_t step;
    std::string what;
};

void count(const Journal& journal, Census& census) {
    for (const std::string& line : journal) {
        std::string words = line.substr(0, line.find(' ', line.find(' ') + 1));
        if (line.starts_with("logged")) words = "logged";
        ++census[words];
        if (line.find(";-") != std::string::npos) ++census["mixed list"];
    }
}

std::string differenceOf(const Journal& program, const Journal& model) {
    const auto [ours, theirs] = std::ranges::mismatch(program, model);
    const auto line = [](auto at, const Journal& journal) { return at == journal.end() ? "(nothing)" : *at; };
    return "  the program: " + line(ours, program) + "\n  the model:   " + line(theirs, model);
}

std::optional<Difference> play(const Beginning& beginning, const std::vector<Action>& actions, Census* census) {
    Journal programs;
    Journal models;
    Program program(beginning, programs);
    ReferenceModel model(beginning, models);
    std::optional<Difference> difference;
    for (std::size_t step = 0; step < actions.size() && !difference; ++step) {
        Action action = actions[step];
        if (action.kind == Action::Kind::advanceToWake) {
            action.time = std::max(nanoseconds(0), model.untilWake().value_or(nanoseconds(0)) + action.time);
        }
        program.perform(action);
        model.perform(action);
        if (programs != models) {
            difference = {step, differenceOf(programs, models)};
        } else if (const std::string ours = program.snapshot(), theirs = model.snapshot(); ours != theirs) {
            difference = {step, "  the program's state: " + ours + "\n  the model's state:   " + theirs};
        } else if (program.queued() != model.queued()) {
            difference = {step, "  queued by the program: " + std::to_string(program.queued()) +
                                    "\n  queued by the model:   " + std::to_string(model.queued())};
        }
        if (census != nullptr) count(programs, *census);
        programs.clear();
        models.clear();
    }
    if (census != nullptr) {
        (*census)["grace ended"] += model.endsOfGrace;
        (*census)["back in time"] += model.returnsInTime;
    }
    return difference;
}

// Removes actions that the failure does not need, in ever smaller pieces. Keeps the first action, which is the launch.
std::vector<Action> shortened(const Beginning& beginning, std::vector<Action> actions) {
    for (std::size_t piece = actions.size() / 2; piece > 0; piece /= 2) {
        for (std::size_t at = 1; at + piece <= actions.size();) {
            std::vector<Action> shorter = actions;
            const auto from = shorter.begin() + static_cast<std::ptrdiff_t>(at);
            shorter.erase(from, from + static_cast<std::ptrdiff_t>(piece));
            if (play(beginning, shorter, nullptr))
                actions = std::move(shorter);
            else
                at += piece;
        }
    }
    return actions;
}

}  // namespace

std::optional<std::string> compare(std::uint64_t seed, int steps, Census& census) {
    Life life(seed);
    const Beginning beginning = life.beginning();
    std::vector<Action> actions = life.actions(steps);
    const std::optional<Difference> found = play(beginning, actions, &census);
    if (!found) return std::nullopt;

    actions.resize(found->step + 1);
    const std::vector<Action> shortest = shortened(beginning, actions);
    const Difference difference = play(beginning, shortest, nullptr).value_or(*found);
    std::string report = "seed " + std::to_string(seed) + ", step " + std::to_string(found->step) + ":\n" +
                         found->what + "\nThe shortest life found that differs (device callbacks " +
                         (beginning.deliverAtOnce ? "at once" : "queued") + "):\n";
    for (const Action& action : shortest) report += "  " + describe(action) + "\n";
    return report + difference.what;
}

}  // namespace kovra::model
