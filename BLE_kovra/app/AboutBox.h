#pragma once

namespace kovra {

class AlertPresenter;
class Application;
class Bundle;
class L10n;
class Workspace;

// Shows the About box: the program's name and version. Its second button opens a message to the support address.
// Returns when the user has closed the box.
void runAboutBox(const Bundle& bundle, Application& application, AlertPresenter& alerts, Workspace& workspace,
                 const L10n& texts);

}  // namespace kovra
