// The composition root: creates the services for the Linux desktop and runs the application with them.

#include <langinfo.h>
#include <malloc.h>

#include <chrono>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "BLE_kovra/app/BLE_kovraApp.h"
#include "BLE_kovra/control/Arguments.h"
#include "BLE_kovra/platform/Platform.h"
#include "BLE_kovra/platform/linux/bus/SessionBus.h"
#include "BLE_kovra/platform/linux/bus/SystemBus.h"
#include "BLE_kovra/platform/linux/desktop/BuildBundle.h"
#include "BLE_kovra/platform/linux/desktop/GlibcLocale.h"
#include "BLE_kovra/platform/linux/desktop/JournalLog.h"
#include "BLE_kovra/platform/linux/desktop/JsonPreferencesStore.h"
#include "BLE_kovra/platform/linux/desktop/ProgramSearch.h"
#include "BLE_kovra/platform/linux/desktop/XdgEnvironment.h"
#include "BLE_kovra/platform/linux/desktop/XdgLoginService.h"
#include "BLE_kovra/platform/linux/desktop/XdgWorkspace.h"
#include "BLE_kovra/platform/linux/hid/UdevHIDService.h"
#include "BLE_kovra/platform/linux/hotkeys/DesktopHotKeys.h"
#include "BLE_kovra/platform/linux/loop/SdEventLoop.h"
#include "BLE_kovra/platform/linux/session/ActivationToken.h"
#include "BLE_kovra/platform/linux/session/DBusActivation.h"
#include "BLE_kovra/platform/linux/session/DBusFacts.h"
#include "BLE_kovra/platform/linux/session/InstanceLock.h"
#include "BLE_kovra/platform/linux/session/LogindSession.h"
#include "BLE_kovra/platform/linux/session/SdEventApplication.h"
#include "BLE_kovra/platform/linux/session/SessionEvents.h"
#include "BLE_kovra/platform/linux/session/SingleInstance.h"
#include "BLE_kovra/platform/linux/session/TimeLimitedLoginService.h"
#include "BLE_kovra/platform/linux/start/StatusNotice.h"
#include "BLE_kovra/platform/linux/start/TrayPresence.h"
#include "BLE_kovra/platform/linux/start/UserStart.h"
#include "BLE_kovra/platform/linux/theme/PanelTheme.h"
#include "BLE_kovra/platform/linux/theme/XTray.h"
#include "BLE_kovra/platform/linux/tray/StatusNotifierFront.h"
#include "BLE_kovra/platform/linux/tray/TrayPopup.h"
#include "BLE_kovra/platform/linux/tray/TrayStatusBar.h"
#include "BLE_kovra/platform/linux/tray/XEmbedTray.h"
#include "BLE_kovra/platform/linux/windows/ProcessAlertPresenter.h"
#include "BLE_kovra/platform/linux/windows/ProcessWindowHost.h"
#include "BLE_kovra/platform/linux/windows/WindowProcess.h"
#include "BLE_kovra/platform/linux/x11/XConnection.h"
#include "BLE_kovra/platform/posix/PosixFileSystem.h"
#include "BLE_kovra/platform/posix/PosixProcessRunner.h"
#include "BLE_kovra/platform/posix/ProcessStart.h"

namespace {

// A start has done its work by then. It leaves holes in the heap, which malloc() would keep.
constexpr std::chrono::seconds startOfRest{2};

// Sets the user's locale for the system's messages, which is all that needs one: names are compared in GlibcLocale's
// own. Every text in this program is UTF-8, so another encoding of the locale is replaced by UTF-8.
void adoptLocale() {
    std::setlocale(LC_MESSAGES, "");
    std::setlocale(LC_CTYPE, "");
    if (std::string_view(::nl_langinfo(CODESET)) != "UTF-8") std::setlocale(LC_CTYPE, "C.UTF-8");
}

void runApplication() {
    kovra::SdEventLoop loop;
    // From here on these signals terminate the application, which writes "off". Without a handler, a signal during the
    // wait for the bus below would end the process at once. A flag that a crash has left at "on" would then stay.
    kovra::SdEventApplication application(loop);
    std::vector<std::unique_ptr<kovra::SdEventLoop::Signal>> signals;
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        if (number == SIGHUP && kovra::startedIgnoringHangUp()) continue;
        signals.push_back(loop.onSignal(number, [&] { application.terminate(); }));
    }

    kovra::JournalLog log;
    const kovra::InstanceLock lock(kovra::standardLockPath());
    kovra::SessionBus bus(loop);
    kovra::ActivationToken activationToken;
    kovra::UserStart* userStart = nullptr;
    const kovra::SingleInstance instance(
        bus, lock, log,
        [&](const std::string& token) {
            activationToken.provide(token);
            application.reopen();
            if (userStart) userStart->startedAgain(token);
        },
        [&](kovra::ApplicationAction action, const std::string& token) {
            const bool opensWindow = action == kovra::ApplicationAction::settings;
            if (opensWindow) activationToken.provide(token);
            application.perform(action);
            if (!userStart) return;
            if (opensWindow)
                userStart->startedAgain(token);
            else
                userStart->endFeedback(token);
        });
    if (instance.isSecond()) return;

    kovra::GlibcLocale locale;
    kovra::PosixFileSystem files;
    kovra::JsonPreferencesStore preferences(kovra::standardPreferencesPath(), log);
    kovra::SystemBus systemBus(loop);
    kovra::UdevHIDService hid(systemBus, log);
    const kovra::SessionEvents session(loop, systemBus, kovra::LogindSession::currentSession(),
                                       kovra::BLE_kovraApp::flagFile(), application, [&] { hid.resynchronize(); });

    const kovra::Desktop desktop = kovra::currentDesktop();
    const auto x =
        desktop == kovra::Desktop::x11 ? kovra::XConnection::open(loop, [&] { application.terminate(); }) : nullptr;
    auto hotKeys = kovra::DesktopHotKeys::on(desktop, x.get(), bus);

    kovra::TimeLimitedLoginService login(std::make_shared<kovra::XdgLoginService>(kovra::ownProgram()));

    const std::string ownToken = kovra::DBusActivation::takeOwnToken();
    activationToken.provide(ownToken);
    kovra::StatusNotifierWatcher watcher(bus);
    kovra::WindowProcess window(loop, kovra::windowProgram);
    std::optional<kovra::XTray> xTray;
    if (x) xTray.emplace(*x);
    kovra::PanelTheme theme(loop, bus, xTray ? &*xTray : nullptr, kovra::desktopNames());
    std::vector<kovra::TrayStatusBar::MakeFront> fronts{[&](kovra::TrayItem& item) {
        kovra::StatusNotifierItem::PopUp popUp;
        if (x && kovra::TrayPopup::isNeededOn(kovra::desktopNames())) {
            popUp = [popup = std::make_shared<kovra::TrayPopup>(loop, window, item)](int atX, int atY) {
                popup->open(atX, atY);
            };
        }
        return std::make_unique<kovra::StatusNotifierFront>(item, bus, watcher, theme.look(), activationToken,
                                                            kovra::iconsBesideProgram(), std::move(popUp));
    }};
    if (xTray) {
        fronts.emplace_back([&](kovra::TrayItem& item) {
            auto front = std::make_unique<kovra::XEmbedTray>(loop, *xTray, theme.look(), window, item);
            front->follow(watcher);
            return front;
        });
    }
    const kovra::TrayPresence tray(watcher, window);
    kovra::StatusNotice notice(bus, tray);
    kovra::TrayStatusBar statusBar(
        loop, std::move(fronts),
        {.announce = [&](const std::string& text) { notice.show(text); }, .advice = [&] { return tray.advice(); }});
    kovra::UserStart ownStart({loop, application, x.get(), watcher, window, activationToken}, ownToken);
    userStart = &ownStart;

    kovra::PosixProcessRunner processes(loop);
    kovra::XdgWorkspace workspace(loop);
    kovra::ProcessWindowHost windows(loop, window, activationToken, workspace);
    kovra::ProcessAlertPresenter alerts(loop, window, activationToken);
    const auto keyListener = window.listen([&](const kovra::ToResident& message) {
        if (std::holds_alternative<kovra::QuitWanted>(message)) application.terminate();
        if (std::holds_alternative<kovra::SettingsWanted>(message)) application.reopen();
    });
    const kovra::DBusFacts facts(bus, {.application = [&] { return application.facts(); },
                                       .hotKey = [&] { return hotKeys.state(); },
                                       .tray = [&] { return tray.name(); },
                                       .sessionBus = &bus.failures(),
                                       .systemBus = &systemBus.failures()});
    kovra::BuildBundle bundle;
    const kovra::Platform platform{
        application, loop,  hid,     preferences, files,     log,       locale, statusBar,
        hotKeys,     login, windows, alerts,      processes, workspace, bundle, kovra::Wording::linuxDesktop};
    loop.asyncAfter(startOfRest, [] { ::malloc_trim(0); });
    kovra::BLE_kovraApp::main(platform);
}

// Prints the reply to the arguments, if there are any. Returns the exit code, which is 1 if the reply cannot be
// printed. Returns nullopt if the application is to start.
std::optional<int> answerArguments(const kovra::control::Arguments& arguments) {
    const auto version = kovra::BuildBundle().infoDictionaryValue("CFBundleShortVersionString");
    const auto reply = kovra::control::replyOfApplication(arguments, std::get<std::string>(version.value()));
    if (!reply) return std::nullopt;
    std::fputs(reply->output.c_str(), stdout);
    std::fputs(reply->error.c_str(), stderr);
    return std::fflush(stdout) == 0 && std::ferror(stdout) == 0 ? reply->exitCode : 1;
}

}  // namespace

int main(int count, char** arguments) {
    // The thread that saves the preferences uses the main arena of malloc(). An arena of its own would stay allocated
    // after the thread has ended.
    ::mallopt(M_ARENA_MAX, 1);
    kovra::prepareProcess();
    if (const auto exitCode = answerArguments({arguments + (count > 0 ? 1 : 0), arguments + count})) return *exitCode;
    adoptLocale();
    try {
        runApplication();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "ble-kovra: %s\n", error.what());
        return 1;
    }
    return 0;
}
