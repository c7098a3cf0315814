#include "BLE_kovra/app/AboutBox.h"

#include <string>
#include <variant>

#include "BLE_kovra/app/MailLink.h"
#include "BLE_kovra/l10n/L10n.h"
#include "BLE_kovra/l10n/SupportAddress.h"
#include "BLE_kovra/platform/Alert.h"
#include "BLE_kovra/platform/Application.h"
#include "BLE_kovra/platform/Bundle.h"
#include "BLE_kovra/platform/Workspace.h"

namespace kovra {

namespace {

std::string versionText(const Bundle& bundle) {
    const auto value = bundle.infoDictionaryValue("CFBundleShortVersionString");
    const std::string* text = value ? std::get_if<std::string>(&*value) : nullptr;
    return text == nullptr ? "1.0" : *text;
}

}  // namespace

void runAboutBox(const Bundle& bundle, Application& application, AlertPresenter& alerts, Workspace& workspace,
                 const L10n& texts) {
    const Alert about{
        "BLE-kovra " + versionText(bundle), texts.s("about.info"), {texts.s("about.ok"), texts.s("about.contact")}};
    application.activateIgnoringOtherApps();
    if (alerts.runModal(about) != AlertResponse::secondButton) return;
    if (const auto link = mailLink(supportAddress)) workspace.open(*link);
}

}  // namespace kovra
