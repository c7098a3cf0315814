// Reads every text of the windows from the widgets, in each language. As between the processes, all messages are
// encoded and decoded.

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QFontMetrics>
#include <QLabel>
#include <optional>
#include <set>
#include <string>
#include <variant>

#include "BLE_kovra/l10n/SupportAddress.h"
#include "BLE_kovra/platform/linux/ui/windows/AlertWindow.h"
#include "BLE_kovra/platform/linux/ui/windows/ViewWindow.h"
#include "BLE_kovra/platform/linux/wire/Encoding.h"
#include "tests/l10n/ExpectedTexts.h"
#include "tests/platform/linux/ui/Legible.h"
#include "tests/platform/linux/ui/QtRig.h"
#include "tests/support/AppRig.h"

namespace kovra {
namespace {

using Texts = std::multiset<std::string>;

class LanguagesOnScreenTest : public testing::TestWithParam<double> {
  protected:
    LanguagesOnScreenTest() {
        QFont font = QApplication::font();
        font.setPointSizeF(10 * GetParam());
        QApplication::setFont(font);
    }

    template <typename Message>
    static Message crossed(const Message& message) {
        return std::get<Message>(decodeToWindow(encode(ToWindow(message))).value());
    }
    // Returns the texts of all visible labels and buttons of the window.
    static Texts read(const QWidget& window) {
        Texts texts;
        for (const QLabel* label : window.findChildren<QLabel*>()) {
            if (label->isVisible()) texts.insert(label->text().toStdString());
        }
        for (const QAbstractButton* button : window.findChildren<QAbstractButton*>()) {
            // A button that paints its label itself has no text, but has the label as its accessible name.
            const QString text = button->text().isEmpty() ? button->accessibleName() : button->text();
            if (button->isVisible()) texts.insert(text.toStdString());
        }
        return texts;
    }
    static std::string expected(const ExpectedTexts& language, const std::string& key) {
        for (const auto& [each, text] : language.texts) {
            if (each == key) return text;
        }
        ADD_FAILURE() << key;
        return {};
    }

    const QtRig qt;
};

TEST_P(LanguagesOnScreenTest, SettingsWindowShowsTheTextsOfTheTables) {
    const char* tags[] = {"en-GB", "ru-RU", "uk-UA", "fr-FR", "de-DE", "es-ES"};
    ASSERT_EQ(expectedTexts().size(), std::size(tags));
    for (std::size_t at = 0; at < std::size(tags); ++at) {
        const ExpectedTexts& language = expectedTexts()[at];
        for (const bool hasDevices : {false, true}) {
            SCOPED_TRACE(std::string(tags[at]) + (hasDevices ? " with devices" : " without devices"));
            Computer computer;
            computer.locale.languages = {tags[at]};
            const DeviceDescription nameless{.product = {}};
            AppRig rig(computer);
            rig.launch();
            if (hasDevices) {
                computer.choose({nameless});
                computer.hid.detach(computer.hid.attach(nameless));
                computer.queue.advance(std::chrono::seconds(3));
            }
            rig.delegate->openSettings();
            computer.queue.run();
            ShowWindow state{.title = computer.windows.title,
                             .styleMask = 7,
                             .contentSize = {440, 480},
                             .front = 1,
                             .activationToken = {},
                             .place = {},
                             .acknowledged = 0,
                             .content = computer.windows.shown};
            ViewWindow window([](const ToResident&) {});
            window.showWindow(crossed(state));
            QCoreApplication::processEvents();
            Texts wanted{supportAddress};
            for (const char* key : {"settings.title", "block", "settings.mode", "mode.always", "mode.onDevice",
                                    "settings.chooseMouse", "settings.hint", "status.active", "settings.developedBy"})
                wanted.insert(expected(language, key));
            wanted.insert(hasDevices
                              ? expected(language, "device.unknown") + ", " + expected(language, "device.disconnected")
                              : expected(language, "settings.noDevices"));
            EXPECT_EQ(read(window), wanted);
            EXPECT_EQ(window.windowTitle(), "BLE-kovra");
        }
    }
}

TEST_P(LanguagesOnScreenTest, AlertsShowTheTextsOfTheTablesUncut) {
    const char* tags[] = {"en-GB", "ru-RU", "uk-UA", "fr-FR", "de-DE", "es-ES"};
    for (std::size_t at = 0; at < std::size(tags); ++at) {
        SCOPED_TRACE(tags[at]);
        const ExpectedTexts& language = expectedTexts()[at];
        Computer computer;
        computer.locale.languages = {tags[at]};
        AppRig rig(computer);
        rig.launch();
        computer.alerts.shown.clear();
        rig.delegate->activateDriver();
        rig.delegate->showAbout();
        ASSERT_EQ(computer.alerts.shown.size(), 2U);
        ShowAlerts state;
        for (const Alert& alert : computer.alerts.shown) state.alerts.push_back({1, "", alert});
        const ShowAlerts shown = crossed(state);
        const std::vector<Texts> wanted{{expected(language, "driver.title"), expected(language, "driver.body"),
                                         expected(language, "driver.activate"), expected(language, "driver.later")},
                                        {"BLE-kovra 1.0", expected(language, "about.info"),
                                         expected(language, "about.ok"), expected(language, "about.contact")}};
        for (std::size_t each = 0; each < 2; ++each) {
            AlertWindow window(shown.alerts[each].alert, [](std::optional<std::size_t>) {}, [](const ToResident&) {});
            window.show();
            QCoreApplication::processEvents();
            EXPECT_EQ(read(window), wanted[each]);
            for (const QLabel* label : window.findChildren<QLabel*>()) EXPECT_TRUE(isWhole(*label));
            for (const QPushButton* button : window.findChildren<QPushButton*>()) EXPECT_TRUE(isWhole(*button));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(FontScales, LanguagesOnScreenTest, testing::Values(1.0, 2.0),
                         [](const auto& scale) { return scale.param == 1 ? "usual" : "doubled"; });

}  // namespace
}  // namespace kovra
