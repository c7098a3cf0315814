#include "tests/contracts/StatusBarContract.h"
#include "tests/fakes/FakeMainQueue.h"
#include "tests/fakes/FakeStatusBar.h"

namespace kovra {
namespace {

class FakeStatusBarDriver {
  public:
    StatusBar& bar() { return bar_; }
    void settle() { queue_.run(); }
    std::string icon() const { return bar_.image ? bar_.image->name : ""; }
    std::string toolTip() const { return bar_.toolTip; }
    bool isThere() const { return bar_.items == 1; }
    void click(std::size_t position) { bar_.choose(position); }
    std::vector<std::string> menu() const {
        std::vector<std::string> lines;
        for (const MenuItem& item : bar_.menu.value_or(Menu{}).items) {
            std::string line = item.isEnabled ? item.title : "(" + item.title + ")";
            if (item.isSeparator) line = "---";
            if (item.state) line = (*item.state == MenuItemState::on ? "[x] " : "[ ] ") + line;
            if (!item.keyEquivalent.empty()) line += " (" + item.keyEquivalent + ")";
            lines.push_back(line);
        }
        return lines;
    }

  private:
    FakeMainQueue queue_;
    FakeStatusBar bar_{queue_};
};

INSTANTIATE_TYPED_TEST_SUITE_P(FakeStatusBar, StatusBarContract, FakeStatusBarDriver);

}  // namespace
}  // namespace kovra
