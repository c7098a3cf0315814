#include "BLE_kovra/platform/linux/ui/style/PortalSettings.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QFile>
#include <QString>
#include <QTemporaryDir>
#include <QTest>
#include <QVariant>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "tests/platform/linux/ui/QtRig.h"
#include "tests/platform/linux/ui/style/SettingsOfDesktop.h"
#include "tests/support/Environment.h"
#include "tests/support/linux/PrivateBus.h"

namespace kovra {
namespace {

using Values = std::vector<QVariant>;

// For answers that a busy machine may delay.
constexpr std::chrono::seconds patience{20};

struct PortalSettingsTest : testing::Test {
    // The toolkit reads the address of the bus once in a process. "Starting" the portal only leaves a file.
    static void SetUpTestSuite() {
        services = std::make_unique<QTemporaryDir>();
        QFile service(services->filePath("portal.service"));
        EXPECT_TRUE(service.open(QFile::WriteOnly));
        service.write("[D-BUS Service]\nName=org.freedesktop.portal.Desktop\nExec=/usr/bin/touch ");
        service.write(started().toLocal8Bit() + '\n');
        service.close();
        bus = std::make_unique<PrivateBus>("DBUS_SESSION_BUS_ADDRESS",
                                           "<servicedir>" + services->path().toStdString() + "</servicedir>");
    }
    static void TearDownTestSuite() {
        bus.reset();
        services.reset();
    }
    static QString started() { return services->filePath("started"); }

    PortalSettingsTest() {
        environment.set("XDG_CURRENT_DESKTOP", "GNOME");
        QFile::remove(started());
    }

    PortalSettings::Setting noting(const char* group, const char* key, Values& noted) {
        return {group, key, [&noted](const QVariant& value) { noted.push_back(value); }};
    }
    std::vector<PortalSettings::Setting> both() {
        return {noting("look", "scheme", schemes), noting("text", "factor", factors)};
    }

    Environment environment;
    static inline std::unique_ptr<QTemporaryDir> services;
    static inline std::unique_ptr<PrivateBus> bus;
    const QtRig rig;
    Values schemes;
    Values factors;
};

TEST_F(PortalSettingsTest, AreKnownBeforeTheFirstWindow) {
    const SettingsOfDesktop desktop({{"look scheme", 1U}, {"text factor", 1.25}});
    const PortalSettings settings(both(), patience);
    EXPECT_EQ(schemes, (Values{1U}));
    EXPECT_EQ(factors, (Values{1.25}));
}

TEST_F(PortalSettingsTest, FollowTheUser) {
    SettingsOfDesktop desktop({{"look scheme", 1U}, {"text factor", 1.25}});
    const PortalSettings settings(both(), patience);
    desktop.change("look", "scheme", 2U);
    desktop.change("text", "scheme", 3U);  // another setting
    desktop.change("text", "factor", 1.5);
    EXPECT_TRUE(QTest::qWaitFor([&] { return factors == Values{1.25, 1.5}; }));
    EXPECT_EQ(schemes, (Values{1U, 2U}));
}

TEST_F(PortalSettingsTest, AreNotReportedIfThePortalDoesNotHaveThem) {
    const SettingsOfDesktop desktop({{"look scheme", 1U}});
    const PortalSettings settings(both(), patience);
    EXPECT_EQ(schemes, (Values{1U}));
    EXPECT_EQ(factors, Values{});
}

TEST_F(PortalSettingsTest, StartThePortalAndFollowIt) {
    const PortalSettings settings(both());
    EXPECT_TRUE(QTest::qWaitFor([] { return QFile::exists(started()); }));
    SettingsOfDesktop desktop({});
    desktop.change("look", "scheme", 1U);
    EXPECT_TRUE(QTest::qWaitFor([&] { return schemes == Values{1U}; }));
}

TEST_F(PortalSettingsTest, AskNothingWithoutADesktop) {
    const SettingsOfDesktop desktop({{"look scheme", 1U}});
    environment.set("XDG_CURRENT_DESKTOP", "");
    const PortalSettings settings(both());
    QCoreApplication::processEvents();
    EXPECT_EQ(schemes, Values{});
    EXPECT_FALSE(QFile::exists(started()));
}

}  // namespace
}  // namespace kovra
