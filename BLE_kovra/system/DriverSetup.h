#pragma once

namespace kovra {

class AlertPresenter;
class Application;
class DriverActivator;
class L10n;

struct DriverSetup {
    // Explains why the driver is needed and, if the user agrees, has it activated. Returns when the user has answered.
    static void showExplanation(Application& application, AlertPresenter& alerts, const DriverActivator& driver,
                                const L10n& texts);
};

}  // namespace kovra
