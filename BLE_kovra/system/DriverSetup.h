#pragma once

namespace kovra {

class AlertPresenter;
class Application;
class DriverActivator;
class L10n;

struct DriverSetup {
    DriverSetup() = delete;

    // Shows an alert that explains why the driver is needed, waits for the user's answer, and activates the driver if
    // the user agrees.
    static void showExplanation(Application& application, AlertPresenter& alerts, const DriverActivator& driver,
                                const L10n& texts);
};

}  // namespace kovra
