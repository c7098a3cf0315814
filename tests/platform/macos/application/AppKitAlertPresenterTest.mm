#include "BLE_kovra/platform/macos/application/AppKitAlertPresenter.h"

#import <AppKit/AppKit.h>

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tests/contracts/AlertPresenterContract.h"
#include "tests/fakes/FakeMainQueue.h"
#include "tests/platform/macos/gnustep/EachTurn.h"
#include "tests/platform/macos/gnustep/Texts.h"

namespace kovra {
namespace {

class AppKitAlertPresenterDriver {
  public:
    AppKitAlertPresenterDriver() : user_([[KovraEachTurn alloc] initWithTurn:[this] { turn(); }]) {}
    AppKitAlertPresenterDriver(const AppKitAlertPresenterDriver&) = delete;
    AppKitAlertPresenterDriver& operator=(const AppKitAlertPresenterDriver&) = delete;
    ~AppKitAlertPresenterDriver() { [user_ stop]; }

    AlertPresenter& alerts() { return alerts_; }
    MainQueue& queue() { return queue_; }
    std::vector<std::string> shown() const { return shown_; }
    // The real application ends its process here. The two tests of the contract that go on afterwards are left out.
    void terminate() {}

    void meanwhile(const std::string& title, std::function<void()> block) { blocks_[title] = std::move(block); }
    void willAnswer(const std::string& title, std::optional<int> button) { answers_[title] = button; }

  private:
    void turn() {
        queue_.run();
        NSWindow* window = [NSApp modalWindow];
        turnsOfWindow_ = window == waiting_ ? turnsOfWindow_ + 1 : 0;
        waiting_ = window;
        if (window == nil) return;
        const std::string title = titleOf(window);
        if (turnsOfWindow_ > mostTurns) {
            ADD_FAILURE() << "nobody ends the alert " << title;
            turnsOfWindow_ = 0;
            return give(window, std::nullopt);
        }
        if (seen_.insert((const void*)window).second) shown_.push_back(title);
        if (const auto block = blocks_.find(title); block != blocks_.end()) {
            const auto work = std::move(block->second);
            blocks_.erase(block);
            return work();
        }
        const auto answer = answers_.find(title);
        if (answer != answers_.end() && answered_.insert((const void*)window).second) give(window, answer->second);
    }
    static std::string titleOf(NSWindow* window) {
        for (NSTextField* field : viewsBelow<NSTextField>([window contentView])) {
            const std::string text = utf8String([field stringValue]);
            if (text.size() == 1) return text;  // the contract's titles are letters
        }
        return {};
    }
    // A button that is pressed by the program ends the alert at the next event.
    static void give(NSWindow* window, std::optional<int> button) {
        if (!button)
            [NSApp abortModal];
        else
            [buttonWithTitle([window contentView], *button == 0 ? "OK" : "Other") performClick:nil];
        [NSApp postEvent:[NSEvent otherEventWithType:NSApplicationDefined
                                            location:NSZeroPoint
                                       modifierFlags:0
                                           timestamp:0
                                        windowNumber:0
                                             context:nil
                                             subtype:0
                                               data1:0
                                               data2:0]
                 atStart:NO];
    }

    static constexpr int mostTurns = 200;  // an alert that is answered ends within a few

    AppKitAlertPresenter alerts_;
    FakeMainQueue queue_;
    NSWindow* waiting_ = nil;  // the topmost alert, for this number of turns
    int turnsOfWindow_ = 0;
    std::vector<std::string> shown_;
    std::set<const void*> seen_;
    std::set<const void*> answered_;
    std::map<std::string, std::function<void()>> blocks_;
    std::map<std::string, std::optional<int>> answers_;
    KovraEachTurn* user_;  // and the main queue
};

INSTANTIATE_TYPED_TEST_SUITE_P(AppKitAlertPresenter, AlertPresenterContract, AppKitAlertPresenterDriver);

}  // namespace
}  // namespace kovra
