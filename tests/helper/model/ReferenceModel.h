#pragma once

#include <array>
#include <deque>
#include <map>
#include <optional>
#include <string>

#include "tests/helper/model/Action.h"
#include "tests/helper/model/World.h"

namespace kovra::helper::model {

// What the pages promise about the helper (docs/decisions/helper.md, the manual page), and nothing about how it works.
//
// The model keeps the facts of the world from the actions, and the facts when the helper last had a reason to look at
// them. Of the world itself it reads only the effects: which devices are muted, who may write the flag, what was
// logged.
//
// After each action it computes twice whether a pad is to be muted. `may` takes each fact in favor of muting: as it is
// or as it was when the helper looked. `must` takes each fact against it. A pad is muted only while it may be, or was
// so within the promised delay. A pad that must be muted is muted after the promised delay.
class ReferenceModel {
  public:
    explicit ReferenceModel(const World& world);

    // Notes an action that was just performed, maybe in the middle of the helper's work. `hadEffect` is what
    // World::perform() has returned.
    void note(const Action& action, bool hadEffect, bool isInWork);
    // Compares the world with the promises. The helper has done all that it can do now. Returns what differs, or an
    // empty string.
    std::string check();

    std::map<std::string, int> census;  // how often something happened

  private:
    // What a user has last written into their own flag.
    struct File {
        bool mayBeOn = false;
        bool isOn = false;  // for certain
        Time written{0};
        bool clockWasSet = false;  // since it was written
        int names = 0;             // further ones in the folder
        bool mayHaveNames = false;
        int version = 0;      // counts the files that the user has lost
        bool isLost = false;  // perhaps: the disk was full while it was no longer in place
    };
    struct Application {
        int user;
        bool hasName;
        Time start;
    };
    struct Facts {
        std::optional<int> user;  // at the machine
        std::array<File, users.size()> files;
        std::map<pid_t, Application> applications;
        bool diskIsReadOnly = false;
        bool runIsFull = false;
    };

    static bool isOn(const Facts& facts, bool isCertain);
    void readApplications();
    std::optional<int> userAtTheMachine() const;
    void look();
    void lookAtSession();
    bool hasHeldOneEnded() const;
    void loseFlag();
    void noteFlag(const Action& action, bool hadEffect);
    void noteFault(const Action& action, bool hadEffect);
    bool isServing() const;
    bool hasTrouble() const;
    Time graceToUnmute() const;
    Time graceToMute() const;
    void update();
    std::string checkLife();
    std::string checkPads();
    std::string checkPad(int shape, bool isMuted);
    std::string checkFlag() const;
    std::string checkLog() const;
    std::string checkSleep() const;
    static bool isRecently(const std::deque<Time>& times, Time now, Time span, std::size_t count);

    const World& world_;
    const Machine& machine_;
    Facts actual_;
    Facts seen_;
    std::array<int, users.size()> keptVersion_{-1, -1, -1};  // the file of each user's kept descriptor
    bool isInWork_ = false;
    Time sessionLookedAt_{-std::chrono::hours(1)};
    Time disturbedAt_{-std::chrono::hours(1)};  // when the flag was taken away in the middle of the helper's work
    int lives_ = 0;
    bool wasServing_ = false;
    std::deque<Time> looks_;        // when the helper had a reason to look
    std::deque<Time> userChanges_;  // when another user came
    Time troubleBegan_{0};
    Time troubleEnded_{0};
    bool isTroubled_ = false;
    bool mayLog_ = false;  // whether this daemon has had a reason to log a line
    Time stoppedAt_{0};
    Time queueWasFull_{-std::chrono::hours(1)};
    Time descriptorsReturned_{-std::chrono::hours(1)};
    Time notServingSince_{0};

    // Of each shape.
    struct Pad {
        bool may = false;
        Time mayEnded{-std::chrono::hours(1)};
        std::optional<Time> mustSince;
        Time refusalEnded{-std::chrono::hours(1)};
        Time grantedAt{0};
        Time ungrantedAt{0};
        bool isUnsettled = false;  // what another program or its driver did has yet to be looked at
        bool wasMuted = false;
    };
    std::map<int, Pad> pads_;
};

}  // namespace kovra::helper::model
