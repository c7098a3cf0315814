#include "BLE_kovra/platform/linux/ui/style/DesktopColors.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QTest>
#include <QThread>
#include <memory>

#include "tests/platform/linux/ui/QtRig.h"
#include "tests/support/Environment.h"
#include "tests/support/linux/PrivateBus.h"

namespace kovra {
namespace {

// The values of the setting color-scheme.
enum Scheme : unsigned { none, dark, light };

// A substitute for the settings of a desktop's portal, in a thread of its own, since whoever reads them waits.
class SettingsOfDesktop : public QDBusVirtualObject {
  public:
    explicit SettingsOfDesktop(Scheme scheme) : scheme_(scheme) {
        moveToThread(&thread_);
        thread_.start();
        EXPECT_TRUE(bus_.registerVirtualObject(path, this));
        EXPECT_TRUE(bus_.registerService("org.freedesktop.portal.Desktop"));
    }
    ~SettingsOfDesktop() override {
        thread_.quit();
        thread_.wait();
        QDBusConnection::disconnectFromBus(name);
    }
    Q_DISABLE_COPY_MOVE(SettingsOfDesktop)

    void change(Scheme scheme) {
        QDBusMessage signal = QDBusMessage::createSignal(path, settings, "SettingChanged");
        signal << group << key << QVariant::fromValue(QDBusVariant(unsigned(scheme)));
        EXPECT_TRUE(bus_.send(signal));
    }

    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override {
        if (message.interface() != settings || message.member() != "Read") return false;
        EXPECT_EQ(message.arguments(), (QVariantList{group, key}));
        const QDBusVariant value{unsigned(scheme_)};
        return bus.send(message.createReply(QVariant::fromValue(QDBusVariant(QVariant::fromValue(value)))));
    }

  private:
    static inline const QString name = "desktop";
    static inline const QString path = "/org/freedesktop/portal/desktop";
    static inline const QString settings = "org.freedesktop.portal.Settings";
    static inline const QString group = "org.freedesktop.appearance";
    static inline const QString key = "color-scheme";

    const Scheme scheme_;
    QThread thread_;
    QDBusConnection bus_ = QDBusConnection::connectToBus(QDBusConnection::SessionBus, name);
};

struct DesktopColorsTest : testing::Test {
    // The toolkit reads the address of the bus once in a process.
    static void SetUpTestSuite() { bus = std::make_unique<PrivateBus>("DBUS_SESSION_BUS_ADDRESS"); }
    static void TearDownTestSuite() { bus.reset(); }

    DesktopColorsTest() { environment.set("XDG_CURRENT_DESKTOP", "GNOME"); }

    static QColor paper() { return QApplication::palette().color(QPalette::Window); }
    static QColor darkPaper() { return darkColors().color(QPalette::Window); }

    Environment environment;
    static inline std::unique_ptr<PrivateBus> bus;
    const QtRig rig;
    const QColor own = paper();
};

TEST_F(DesktopColorsTest, AreDarkBeforeTheFirstWindowIfTheUserPrefersThat) {
    const SettingsOfDesktop desktop(dark);
    const DesktopColors colors;
    EXPECT_EQ(paper(), darkPaper());
}

TEST_F(DesktopColorsTest, FollowTheUser) {
    SettingsOfDesktop desktop(light);
    const DesktopColors colors;
    EXPECT_EQ(paper(), own);
    desktop.change(dark);
    EXPECT_TRUE(QTest::qWaitFor([] { return paper() == darkPaper(); }));
    desktop.change(none);
    EXPECT_TRUE(QTest::qWaitFor([this] { return paper() == own; }));
}

TEST_F(DesktopColorsTest, AreThoseOfTheThemeWhileThatIsDark) {
    const SettingsOfDesktop desktop(dark);
    const QColor themes(0x10, 0x20, 0x30);
    QApplication::setPalette(QPalette(themes, themes));
    const DesktopColors colors;
    EXPECT_EQ(paper(), themes);
    // The theme may become light again.
    QApplication::setPalette(QPalette(QColor(Qt::white), QColor(Qt::white)));
    EXPECT_TRUE(QTest::qWaitFor([] { return paper() == darkPaper(); }));
}

TEST_F(DesktopColorsTest, AreThoseOfTheThemeWithoutAPortalOrADesktop) {
    const DesktopColors withoutPortal;
    EXPECT_EQ(paper(), own);
    const SettingsOfDesktop desktop(dark);
    environment.set("XDG_CURRENT_DESKTOP", "");
    const DesktopColors withoutDesktop;
    EXPECT_EQ(paper(), own);
}

}  // namespace
}  // namespace kovra
