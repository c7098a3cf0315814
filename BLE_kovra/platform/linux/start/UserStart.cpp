#include "BLE_kovra/platform/linux/start/UserStart.h"

#include <chrono>

#include "BLE_kovra/platform/linux/session/ActivationToken.h"

namespace kovra {

namespace {

using Icon = StatusNotifierWatcher::Icon;
using namespace std::chrono_literals;

// A click is handled in the next turns of the queue, and a window that it opens takes the token then.
constexpr auto longestClick = 500ms;

}  // namespace

UserStart::UserStart(const Desk& desk, const std::string& token)
    : desk_(desk),
      feedback_(desk.loop, [this](const std::string& id) { endFeedback(id); }),
      clicks_(desk.loop, [this](const std::string& id) { endFeedback(id); }, longestClick) {
    desk_.token.onClick = [this](const std::string& id) { clicked(id); };
    if (desk_.x != nullptr) xLaunch_.emplace(*desk_.x);
    if (token.empty()) return;
    launch_ = desk_.application.listenForLaunch([this] { launchEnded(); });
    desk_.loop.async(lifetime_.guard([this, token] { begin(token); }));
}

// The desktop does not notice that the process ends. So the pointer would stay busy after a click on "Quit".
UserStart::~UserStart() {
    desk_.token.onClick = nullptr;
    const bool isBusy = feedback_.isShown() || clicks_.isShown();
    feedback_.end();
    clicks_.end();
    if (isBusy && xLaunch_) xLaunch_->finish();
    if (waylandLaunch_) waylandLaunch_->finish();
}

void UserStart::startedAgain(const std::string& token) {
    if (first_) first_->settingsOpened();
    feedback_.begin(token);
    if (feedback_.isShown() && !showing_) showing_ = desk_.window.listenForShowing([this] { shown(); });
}

void UserStart::begin(const std::string& token) {
    // Its timer expires first, so that a window that it opens still has the token.
    first_ = std::make_unique<FirstMinute>(
        desk_.loop, FirstMinute::Desk{.lookForTray = [this] { lookForTray(); },
                                      .isNothingChosen = [this] { return isNothingChosen(); },
                                      .isAlertOpen = [this] { return desk_.window.shows<ShowAlerts>(); },
                                      .openSettings = [this] { desk_.application.reopen(); }});
    feedback_.begin(token);
    icon_ = desk_.watcher.listenForIcon([this] { trayChanged(); });
    showing_ = desk_.window.listenForShowing([this] { shown(); });
    if (hasLaunched_) first_->launchEnded();
    trayChanged();
}

void UserStart::clicked(const std::string& token) {
    clicks_.end();
    clicks_.begin(token);
}

void UserStart::launchEnded() {
    hasLaunched_ = true;
    if (!first_) return;
    first_->launchEnded();
    trayChanged();
}

// Afterwards the desktop no longer accepts the token. So it is not ended for a window that may still need it.
void UserStart::endFeedback(const std::string& token) {
    if (token.empty() || token.size() > ActivationToken::longest) return;
    desk_.token.forget(token);
    if (xLaunch_) {
        xLaunch_->end(token);
    } else if (!desk_.token.isUsed(token) || !showsWindowOrAlert()) {
        if (!waylandLaunch_) waylandLaunch_.emplace(desk_.loop);
        waylandLaunch_->end(token);
    }
    releaseIfOver();
}

void UserStart::trayChanged() {
    if (desk_.watcher.icon() == Icon::shown) {
        first_->trayTakesIcon();
        if (hasLaunched_ || desk_.x != nullptr) feedback_.end();
    } else if (desk_.watcher.icon() == Icon::notShown && !first_->isDecided()) {
        lookForTray();
    }
    releaseIfOver();
}

// A missing reply of the desktop counts as a missing host: by then FirstMinute has waited long enough for it.
void UserStart::lookForTray() {
    const bool hasIcon = desk_.watcher.icon() == Icon::shown || desk_.window.shows<ShowTray>();
    if (hasIcon) return first_->trayTakesIcon();
    if (desk_.x == nullptr) return first_->trayIsMissing();
    query_ = std::make_unique<XEmbedTrayQuery>(*desk_.x, [this](bool isPresent) {
        if (isPresent)
            first_->trayTakesIcon();
        else
            first_->trayIsMissing();
        releaseIfOver();
    });
}

void UserStart::shown() {
    const bool showsWindow = desk_.window.shows<ShowWindow>();
    if (showsWindow && first_) first_->settingsOpened();
    const bool isSeen = showsWindowOrAlert() || desk_.window.shows<ShowTray>();
    if (isSeen && desk_.x != nullptr) feedback_.end();
    releaseIfOver();
}

bool UserStart::isNothingChosen() const {
    const auto facts = desk_.application.facts();
    return facts && facts->chosen.empty();
}

bool UserStart::showsWindowOrAlert() const {
    return desk_.window.shows<ShowWindow>() || desk_.window.shows<ShowAlerts>();
}

void UserStart::releaseIfOver() {
    const bool isDecided = !first_ || first_->isDecided();
    if (isDecided) icon_.reset();
    if (isDecided && !feedback_.isShown()) showing_.reset();
}

}  // namespace kovra
