#include "tests/contracts/AlertPresenterContract.h"

#include <map>
#include <utility>

#include "tests/fakes/FakeAlerts.h"
#include "tests/fakes/FakeMainQueue.h"

namespace kovra {
namespace {

class FakeAlertsDriver {
  public:
    FakeAlertsDriver() {
        alerts_.meanwhile = [this] {
            const std::string title = alerts_.shown.back().messageText;
            if (const auto block = std::exchange(blocks_[title], nullptr)) queue_.async(block);
            queue_.run();
            const auto button = answers_[title];
            alerts_.answer = !button        ? AlertResponse::aborted
                             : *button == 0 ? AlertResponse::firstButton
                                            : AlertResponse::secondButton;
        };
    }
    AlertPresenter& alerts() { return alerts_; }
    MainQueue& queue() { return queue_; }
    void meanwhile(const std::string& title, MainQueue::Block block) { blocks_[title] = std::move(block); }
    void willAnswer(const std::string& title, std::optional<std::size_t> button) { answers_[title] = button; }
    std::vector<std::string> shown() const {
        std::vector<std::string> titles;
        for (const Alert& alert : alerts_.shown) titles.push_back(alert.messageText);
        return titles;
    }
    void terminate() {
        queue_.stop();
        alerts_.terminate();
    }

  private:
    FakeMainQueue queue_;
    FakeAlerts alerts_;
    std::map<std::string, MainQueue::Block> blocks_;
    std::map<std::string, std::optional<std::size_t>> answers_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(FakeAlerts, AlertPresenterContract, FakeAlertsDriver);

}  // namespace
}  // namespace kovra
