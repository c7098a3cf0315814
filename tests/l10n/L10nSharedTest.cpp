#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "BLE_kovra/l10n/L10n.h"
#include "BLE_kovra/platform/Platform.h"
#include "tests/fakes/FakeAlerts.h"
#include "tests/fakes/FakeApplication.h"
#include "tests/fakes/FakeDesktop.h"
#include "tests/fakes/FakeFileSystem.h"
#include "tests/fakes/FakeHID.h"
#include "tests/fakes/FakeHotKeys.h"
#include "tests/fakes/FakeLocale.h"
#include "tests/fakes/FakeLog.h"
#include "tests/fakes/FakeLogin.h"
#include "tests/fakes/FakeMainQueue.h"
#include "tests/fakes/FakePreferences.h"
#include "tests/fakes/FakeProcesses.h"
#include "tests/fakes/FakeStatusBar.h"
#include "tests/fakes/FakeWindows.h"

namespace kovra {
namespace {

class CountingLocale : public FakeLocale {
  public:
    using FakeLocale::FakeLocale;

    std::vector<std::string> preferredLanguages() const override {
        ++reads;
        return FakeLocale::preferredLanguages();
    }

    mutable std::atomic<int> reads = 0;
};

// A process has only one shared instance, so one test covers its whole life.
TEST(L10nSharedTest, IsCreatedOnceAtFirstUseAndKeepsItsLanguage) {
    FakeApplication application;
    FakeMainQueue queue;
    FakeHID hid(queue);
    FakePreferences preferences;
    FakeFileSystem files;
    FakeLog log;
    CountingLocale locale({"de-AT", "ru-RU"});
    FakeStatusBar statusBar(queue);
    FakeHotKeys hotKeys;
    FakeLogin login;
    FakeWindows windows;
    FakeAlerts alerts;
    FakeProcesses processes;
    FakeWorkspace workspace;
    FakeBundle bundle;
    const Platform platform{
        application, queue, hid,     preferences, files,     log,       locale, statusBar,
        hotKeys,     login, windows, alerts,      processes, workspace, bundle, Wording::linuxDesktop};
    Platform::install(platform);
    EXPECT_EQ(locale.reads, 0);

    constexpr int threadCount = 4;
    std::atomic<int> waiting = threadCount;
    std::vector<std::string> firstTexts(threadCount);
    std::vector<std::thread> threads;
    for (std::string& firstText : firstTexts) {
        threads.emplace_back([&] {
            --waiting;
            while (waiting > 0) std::this_thread::yield();
            firstText = L10n::shared().s("menu.quit");
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(firstTexts, std::vector<std::string>(threadCount, "Beenden"));
    EXPECT_EQ(locale.reads, 1);

    locale.languages = {"fr-FR"};
    EXPECT_EQ(L10n::shared().s("menu.quit"), "Beenden");
    EXPECT_EQ(L10n::shared().current(), L10n::Lang::de);
    locale.languages = {};
    EXPECT_EQ(L10n::shared().s("menu.quit"), "Beenden");
    EXPECT_EQ(L10n::shared().s("menu.none"), "menu.none");
    EXPECT_EQ(L10n::shared().s("menu.hotkeyHint"), "Tastenkürzel: Strg+Alt+T");  // the wording of the platform
    EXPECT_EQ(locale.reads, 1);
    EXPECT_EQ(&L10n::shared(), &L10n::shared());
    EXPECT_TRUE(log.lines.empty());
}

}  // namespace
}  // namespace kovra
