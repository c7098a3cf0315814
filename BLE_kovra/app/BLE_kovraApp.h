#pragma once

#include <memory>

namespace kovra {

class AppDelegate;
struct Platform;

// The entry point and the owner of the delegate. The constructor loads the saved choices.
class BLE_kovraApp {
  public:
    // Runs the application on the services of `platform` until the application terminates.
    static void main(const Platform& platform);

    // Returns the path of the flag file. On Linux, FlagHandover watches this file, because the helper may replace it
    // while the program runs.
    static const char* flagFile();

  private:
    explicit BLE_kovraApp(const Platform& platform);

    std::shared_ptr<AppDelegate> appDelegate_;
};

}  // namespace kovra
