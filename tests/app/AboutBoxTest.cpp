#include "BLE_kovra/app/AboutBox.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "BLE_kovra/app/MailLink.h"
#include "BLE_kovra/l10n/L10n.h"
#include "tests/fakes/FakeAlerts.h"
#include "tests/fakes/FakeApplication.h"
#include "tests/fakes/FakeDesktop.h"

namespace kovra {
namespace {

using Texts = std::vector<std::string>;

struct AboutRig {
    explicit AboutRig(const char* language = "en") : texts({language}) {}

    Alert run() {
        runAboutBox(bundle, application, alerts, workspace, texts);
        return alerts.shown.back();
    }

    FakeBundle bundle;
    FakeApplication application;
    FakeAlerts alerts;
    FakeWorkspace workspace;
    L10n texts;
};

TEST(AboutBoxTest, NamesTheProgramAndItsVersion) {
    AboutRig rig;
    rig.bundle.values["CFBundleShortVersionString"] = std::string("2.5.1 beta");
    EXPECT_EQ(rig.run().messageText, "BLE-kovra 2.5.1 beta");
}

TEST(AboutBoxTest, ShowsOneDotZeroWithoutAVersion) {
    AboutRig rig;
    rig.bundle.values["CFBundleVersion"] = std::string("7");
    EXPECT_EQ(rig.run().messageText, "BLE-kovra 1.0");
}

TEST(AboutBoxTest, ShowsOneDotZeroIfTheVersionIsNoText) {
    for (const InfoValue& value : {InfoValue(2.5), InfoValue(true)}) {
        AboutRig rig;
        rig.bundle.values["CFBundleShortVersionString"] = value;
        EXPECT_EQ(rig.run().messageText, "BLE-kovra 1.0");
    }
}

TEST(AboutBoxTest, ShowsAnEmptyVersionUnchanged) {
    AboutRig rig;
    rig.bundle.values["CFBundleShortVersionString"] = std::string();
    EXPECT_EQ(rig.run().messageText, "BLE-kovra ");
}

TEST(AboutBoxTest, IsInTheUsersLanguage) {
    for (const L10n::Lang language : L10n::allLanguages) {
        AboutRig rig(std::string(L10n::rawValue(language)).c_str());
        const Alert about = rig.run();
        EXPECT_EQ(about.informativeText, rig.texts.s("about.info"));
        EXPECT_EQ(about.buttons, (Texts{rig.texts.s("about.ok"), rig.texts.s("about.contact")}));
    }
}

TEST(AboutBoxTest, BringsTheApplicationToTheFrontFirst) {
    AboutRig rig;
    int activationsBefore = 0;
    rig.alerts.onShown = [&] { activationsBefore = rig.application.activations; };
    rig.run();
    EXPECT_EQ(activationsBefore, 1);
}

TEST(AboutBoxTest, ItsFirstButtonOpensNothing) {
    for (const AlertResponse answer : {AlertResponse::firstButton, AlertResponse::aborted}) {
        AboutRig rig;
        rig.alerts.answer = answer;
        rig.run();
        EXPECT_EQ(rig.workspace.opened, Texts{});
    }
}

TEST(AboutBoxTest, ItsSecondButtonBeginsAMessageToTheSupport) {
    AboutRig rig;
    rig.alerts.answer = AlertResponse::secondButton;
    rig.run();
    EXPECT_EQ(rig.workspace.opened, Texts{"mailto:support@ble-kovra.example"});
}

TEST(MailLinkTest, IsTheSchemeAndTheAddress) {
    EXPECT_EQ(mailLink("someone+tag@example.org"), "mailto:someone+tag@example.org");
}

TEST(MailLinkTest, AcceptsEveryCharacterOfAURL) {
    const std::string characters = "azAZ09-._~:/?#[]@!$&'()*+,;=%";
    EXPECT_EQ(mailLink(characters), "mailto:" + characters);
}

TEST(MailLinkTest, IsNullForACharacterThatAURLMayNotContain) {
    for (const char* address : {"", "two words@example.org", "a\n@example.org", "ü@example.org", "<a@example.org>"})
        EXPECT_EQ(mailLink(address), std::nullopt) << address;
}

}  // namespace
}  // namespace kovra
