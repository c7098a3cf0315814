#pragma once

#include <memory>

namespace kovra {

class AppDelegate;
struct Platform;

// The application's entry type: owns the one delegate. Making it loads the saved choices, before anything runs.
class BLE_kovraApp {
  public:
    // Runs the application on these services until it terminates.
    static void main(const Platform& platform);

  private:
    explicit BLE_kovraApp(const Platform& platform);

    std::shared_ptr<AppDelegate> appDelegate_;
};

}  // namespace kovra
