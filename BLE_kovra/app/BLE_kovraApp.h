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

    // The file that tells the helper, for a system on which somebody else may put it in place while the program runs.
    static const char* flagFile();

  private:
    explicit BLE_kovraApp(const Platform& platform);

    std::shared_ptr<AppDelegate> appDelegate_;
};

}  // namespace kovra
