// The part of the reference model that keeps the facts.

#include <cstddef>

#include "tests/helper/model/ReferenceModel.h"

namespace kovra::helper::model {

namespace {

using namespace std::chrono_literals;

}  // namespace

// The file in place was removed or replaced. If it is not known whose it was, anybody's may be lost.
void ReferenceModel::loseFlag() {
    const bool isKnown = !isInWork_ && isServing() && !machine_.daemon()->isStopped && !hasTrouble() &&
                         seen_.user == actual_.user && !isRecently(userChanges_, machine_.now, 5s, 4) &&
                         machine_.now >= troubleEnded_ + 301s;
    for (int user = 0; user < static_cast<int>(users.size()); ++user) {
        File& file = actual_.files.at(static_cast<std::size_t>(user));
        if (isKnown && actual_.user == user) {
            file = File{.version = file.version + 1};
        } else if (!isKnown) {
            file.isOn = false;
            file.isLost = true;
            file.mayHaveNames = file.mayHaveNames || file.names > 0;
            file.names = 0;
        }
    }
}

void ReferenceModel::noteFlag(const Action& action, bool hadEffect) {
    if (!hadEffect) return;
    const auto user = static_cast<std::size_t>(action.user);
    File& file = actual_.files.at(user);
    const bool saysOn = action.text == "on";
    switch (action.kind) {
        case Action::Kind::write:
            file = File{.mayBeOn = saysOn,
                        .isOn = saysOn,
                        .written = machine_.now,
                        .names = file.names,
                        .mayHaveNames = file.mayHaveNames,
                        .version = file.version,
                        .isLost = file.isLost};
            ++census[saysOn ? "wrote on" : "wrote another word"];
            return look();
        case Action::Kind::keepOpen:
            keptVersion_.at(user) = file.version;
            file.isLost = false;  // it is in place
            return;
        case Action::Kind::writeKept:
            if (keptVersion_.at(user) != file.version) return;
            file.mayBeOn = saysOn || (file.isLost && file.mayBeOn);
            file.isOn = saysOn && !file.isLost;
            if (saysOn || !file.isLost) file.written = machine_.now;
            ++census["wrote through a kept descriptor"];
            if (actual_.user == action.user) look();
            return;
        case Action::Kind::remove:
        case Action::Kind::replace:
            // Maybe during a hand-over, which has then failed.
            if (isInWork_) disturbedAt_ = machine_.now;
            mayLog_ = mayLog_ || isInWork_;
            loseFlag();
            return look();
        case Action::Kind::link:
            if (actual_.user && !isInWork_ && isServing() && seen_.user == actual_.user && !hasTrouble())
                ++actual_.files.at(static_cast<std::size_t>(*actual_.user)).names;
            else
                for (File& each : actual_.files) each.mayHaveNames = true;
            return look();
        case Action::Kind::linkElsewhere:
        case Action::Kind::moveFolder:
        case Action::Kind::openFolder:
            if (action.kind == Action::Kind::moveFolder) {
                for (File& each : actual_.files) each = File{.version = each.version + 1};
            }
            return look();
        case Action::Kind::unlink: {
            const bool isInPlace = actual_.user && actual_.files.at(static_cast<std::size_t>(*actual_.user)).names > 0;
            for (File& each : actual_.files) {
                each.names = 0;
                each.mayHaveNames = false;
            }
            if (isInPlace) look();
            return;
        }
        case Action::Kind::dropLeft:
            if (actual_.user == action.user || isInWork_) {
                file.isOn = false;
                file.isLost = true;
            } else {
                file = File{.mayBeOn = file.isLost && file.mayBeOn, .version = file.version + 1};
            }
            return;
        default:
            return;
    }
}

void ReferenceModel::noteFault(const Action& action, bool hadEffect) {
    if (action.kind == Action::Kind::fillDisk) {
        for (File& file : actual_.files) file.isOn = false, file.isLost = true;
    }
    if (action.kind == Action::Kind::takeDescriptors && !action.truth && hadEffect) descriptorsReturned_ = machine_.now;
    if (hadEffect) mayLog_ = true;
    actual_.diskIsReadOnly = machine_.diskIsReadOnly;
    actual_.runIsFull = machine_.runIsFull;
    if (hadEffect && hasTrouble() && !isTroubled_) troubleBegan_ = machine_.now;
    if (hadEffect && !hasTrouble() && isTroubled_) troubleEnded_ = machine_.now, ++census["troubles that ended"];
    isTroubled_ = hasTrouble();
}

void ReferenceModel::note(const Action& action, bool hadEffect, bool isInWork) {
    isInWork_ = isInWork;
    Pad& pad = pads_[action.number % static_cast<int>(shapes().size())];
    readApplications();
    actual_.user = userAtTheMachine();
    noteFlag(action, hadEffect);
    switch (action.kind) {
        case Action::Kind::fillDisk:
        case Action::Kind::protectDisk:
        case Action::Kind::takeWatches:
        case Action::Kind::takeDescriptors:
        case Action::Kind::fillRun:
        case Action::Kind::fillQueue:
            noteFault(action, hadEffect);
            break;
        case Action::Kind::breakLogin:
            noteFault(action, hadEffect);
            lookAtSession();
            break;
        case Action::Kind::killApplication:
            if (hadEffect) ++census["applications killed"];
            if (hadEffect && hasHeldOneEnded()) look();
            break;
        case Action::Kind::sitDown:
        case Action::Kind::leave:
        case Action::Kind::greet:
        case Action::Kind::comeRemotely:
        case Action::Kind::closeSession:
        case Action::Kind::repeatSession:
        case Action::Kind::showTerminal:
            lookAtSession();
            break;
        case Action::Kind::touch:
            look();
            break;
        case Action::Kind::plug:
        case Action::Kind::plugUngranted:
        case Action::Kind::unplug:
            if (!hadEffect) break;
            mayLog_ = mayLog_ || isInWork_;  // a device that is just being muted
            if (action.kind != Action::Kind::unplug) pad = Pad{};
            pad.grantedAt = machine_.now;
            if (action.kind == Action::Kind::plugUngranted)
                pad.grantedAt = forever, pad.ungrantedAt = machine_.now, mayLog_ = true;
            look();
            break;
        case Action::Kind::grant:
            for (auto& [shape, each] : pads_) {
                if (each.grantedAt == forever) each.grantedAt = machine_.now;
            }
            break;
        case Action::Kind::refuseToWork:
            if (hadEffect) mayLog_ = true;
            if (hadEffect && !action.truth) pad.refusalEnded = machine_.now, ++census["refusals that ended"];
            break;
        case Action::Kind::refuseToPause:
        case Action::Kind::inhibit:
            if (!hadEffect) break;
            mayLog_ = true;
            pad.isUnsettled = true;
            break;
        case Action::Kind::setClock:
            for (File& file : actual_.files) {
                file.clockWasSet = true;
                file.isOn = false;
            }
            look();
            break;
        case Action::Kind::stop:
            if (hadEffect && machine_.now >= stoppedAt_) stoppedAt_ = machine_.now;
            break;
        case Action::Kind::resume:
            if (hadEffect) look();
            break;
        case Action::Kind::startService:
            if (hadEffect) notServingSince_ = machine_.now;
            break;
        default:
            break;
    }
    update();
}

}  // namespace kovra::helper::model
