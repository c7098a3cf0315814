#pragma once

namespace kovra {

class AlertPresenter;
class Application;
class Bundle;
class L10n;
class Workspace;

// Shows the About box with the program's name, its version and the support address. The second button opens a message
// to that address. Returns when the box is closed.
void runAboutBox(const Bundle& bundle, Application& application, AlertPresenter& alerts, Workspace& workspace,
                 const L10n& texts);

}  // namespace kovra
