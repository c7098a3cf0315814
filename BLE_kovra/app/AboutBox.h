#pragma once

namespace kovra {

class AlertPresenter;
class Application;
class Bundle;
class L10n;
class Workspace;

// Shows the About box with the program's name, its version and the support address, and returns when the user has
// closed it. If the user closes it with the second button, opens a mailto link to that address.
void runAboutBox(const Bundle& bundle, Application& application, AlertPresenter& alerts, Workspace& workspace,
                 const L10n& texts);

}  // namespace kovra
