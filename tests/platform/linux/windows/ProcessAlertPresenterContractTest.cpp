#include <map>
#include <set>
#include <utility>

#include "BLE_kovra/platform/linux/session/ActivationToken.h"
#include "BLE_kovra/platform/linux/windows/ProcessAlertPresenter.h"
#include "tests/contracts/AlertPresenterContract.h"
#include "tests/platform/linux/windows/StandInWindow.h"

namespace kovra {
namespace {

class ProcessAlertPresenterDriver {
  public:
    ProcessAlertPresenterDriver() { scheduleLook(); }
    AlertPresenter& alerts() { return alerts_; }
    MainQueue& queue() { return loop_; }
    void meanwhile(const std::string& title, MainQueue::Block block) { blocks_[title] = std::move(block); }
    void willAnswer(const std::string& title, std::optional<std::size_t> button) { answers_[title] = button; }
    std::vector<std::string> shown() const {
        std::map<std::uint64_t, std::string> titles;
        for (const ShowAlerts& each : standIn_.received<ShowAlerts>()) {
            for (const auto& open : each.alerts) titles[open.number] = open.alert.messageText;
        }
        std::vector<std::string> inOrder;
        for (const auto& [number, title] : titles) inOrder.push_back(title);
        return inOrder;
    }
    void terminate() { loop_.stop(); }

  private:
    // Checks periodically which alerts the fake window process shows.
    void scheduleLook() {
        loop_.asyncAfter(std::chrono::milliseconds(2), [this] {
            scheduleLook();
            look();
        });
    }
    void look() {
        const auto open = standIn_.alerts();
        if (open.empty()) return;
        const std::string title = open.back().alert.messageText;
        if (const auto block = std::exchange(blocks_[title], nullptr)) {
            busy_.insert(title);
            block();
            busy_.erase(title);
        } else if (!busy_.contains(title) && answers_.contains(title)) {
            standIn_.send(AlertAnswered{open.back().number, answers_[title]});
        }
    }

    SdEventLoop loop_;
    StandInWindow standIn_{loop_};
    ActivationToken token_;
    ProcessAlertPresenter alerts_{loop_, standIn_.process(), token_};
    std::map<std::string, MainQueue::Block> blocks_;
    std::map<std::string, std::optional<std::size_t>> answers_;
    std::set<std::string> busy_;  // titles of alerts whose block has not returned yet
};

INSTANTIATE_TYPED_TEST_SUITE_P(ProcessAlertPresenter, AlertPresenterContract, ProcessAlertPresenterDriver);

}  // namespace
}  // namespace kovra
