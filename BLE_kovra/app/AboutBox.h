#pragma once

namespace kovra {

class AlertPresenter;
class Application;
class Bundle;
class L10n;
class Workspace;

// Shows what this program is and which version; its second button begins a message to the support address. Returns
// when the user is done.
void runAboutBox(const Bundle& bundle, Application& application, AlertPresenter& alerts, Workspace& workspace,
                 const L10n& texts);

}  // namespace kovra
