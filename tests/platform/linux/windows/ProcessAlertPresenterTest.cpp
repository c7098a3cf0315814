#include "BLE_kovra/platform/linux/windows/ProcessAlertPresenter.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "BLE_kovra/platform/linux/session/ActivationToken.h"
#include "tests/platform/linux/windows/StandInWindow.h"
#include "tests/support/Environment.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;

class ProcessAlertPresenterTest : public testing::Test {
  protected:
    using Titles = std::vector<std::string>;

    ProcessAlertPresenterTest() {
        loop.asyncAfter(20s, [this] {
            ADD_FAILURE() << "an alert that is not answered";
            loop.stop();
        });
    }

    AlertResponse run(const std::string& title) { return alerts.runModal({title, "text", {"OK", "Other"}}); }
    Titles open() const {
        Titles titles;
        for (const auto& each : standIn.alerts()) titles.push_back(each.alert.messageText);
        return titles;
    }
    // Runs the block in a turn of the loop as soon as the alerts with these titles are open.
    void whenOpen(const Titles& titles, std::function<void()> block) {
        loop.asyncAfter(2ms, [this, titles, block = std::move(block)] {
            if (open() == titles)
                block();
            else
                whenOpen(titles, block);
        });
    }
    void answer(std::optional<std::size_t> button) {
        standIn.send(AlertAnswered{standIn.alerts().back().number, button});
    }

    SdEventLoop loop;
    StandInWindow standIn{loop};
    ActivationToken token;
    ProcessAlertPresenter alerts{loop, standIn.process(), token};
};

TEST_F(ProcessAlertPresenterTest, ShowsTheAlertAndReturnsTheAnswer) {
    const std::vector<std::pair<std::optional<std::size_t>, AlertResponse>> answers{
        {0, AlertResponse::firstButton},
        {1, AlertResponse::secondButton},
        {std::nullopt, AlertResponse::aborted},
        {2, AlertResponse::aborted},
        {~std::size_t{0}, AlertResponse::aborted}};
    for (const auto& [button, response] : answers) {
        whenOpen({"A"}, [&, button = button] {
            EXPECT_EQ(standIn.alerts()[0].alert, (Alert{"A", "text", {"OK", "Other"}}));
            answer(button);
        });
        EXPECT_EQ(run("A"), response);
        standIn.turnUntil([&] { return open().empty(); });
    }
    EXPECT_EQ(standIn.starts(), 1U);
    standIn.turnUntil([&] { return !standIn.isRunning(); });
}

TEST_F(ProcessAlertPresenterTest, PassesTheTokenOnlyToTheNextAlert) {
    token.provide("a token");
    whenOpen({"A"}, [&] {
        EXPECT_EQ(standIn.alerts()[0].activationToken, "a token");
        whenOpen({"A", "B"}, [&] {
            EXPECT_EQ(standIn.alerts()[1].activationToken, "");
            answer(0);
        });
        run("B");
        whenOpen({"A"}, [&] { answer(0); });
    });
    run("A");
}

TEST_F(ProcessAlertPresenterTest, ReturnsTheUpperOfTwoAlertsFirst) {
    Titles returned;
    whenOpen({"A"}, [&] {
        whenOpen({"A", "B"}, [&] { answer(1); });
        EXPECT_EQ(run("B"), AlertResponse::secondButton);
        returned.emplace_back("B");
        whenOpen({"A"}, [&] { answer(0); });
    });
    EXPECT_EQ(run("A"), AlertResponse::firstButton);
    returned.emplace_back("A");
    EXPECT_EQ(returned, (Titles{"B", "A"}));
}

TEST_F(ProcessAlertPresenterTest, ClosesAnAnsweredLowerAlertAndReturnsItAfterTheUpper) {
    Titles returned;
    whenOpen({"A"}, [&] {
        whenOpen({"A", "B"}, [&] {
            standIn.send(AlertAnswered{standIn.alerts()[0].number, 1});
            whenOpen({"B"}, [&] { answer(0); });
        });
        EXPECT_EQ(run("B"), AlertResponse::firstButton);
        returned.emplace_back("B");
    });
    EXPECT_EQ(run("A"), AlertResponse::secondButton);
    returned.emplace_back("A");
    EXPECT_EQ(returned, (Titles{"B", "A"}));
}

TEST_F(ProcessAlertPresenterTest, BringsTheTopmostAlertToTheFrontIfItIsRequestedAgain) {
    whenOpen({"A"}, [&] {
        whenOpen({"A", "B"}, [&] {
            const auto before = standIn.newest<ShowAlerts>()->front;
            token.provide("another token");
            EXPECT_EQ(run("B"), AlertResponse::aborted);
            standIn.turnUntil([&] { return standIn.newest<ShowAlerts>()->front != before; });
            EXPECT_EQ(open(), (Titles{"A", "B"}));
            EXPECT_EQ(standIn.alerts()[1].activationToken, "another token");
            EXPECT_EQ(token.take(), "");
            answer(0);
        });
        EXPECT_EQ(run("B"), AlertResponse::firstButton);
        whenOpen({"A"}, [&] { answer(1); });
    });
    EXPECT_EQ(run("A"), AlertResponse::secondButton);
}

TEST_F(ProcessAlertPresenterTest, BringsALowerAlertAboveTheOthersIfItIsRequestedAgain) {
    whenOpen({"A"}, [&] {
        whenOpen({"A", "B"}, [&] {
            const auto before = *standIn.newest<ShowAlerts>();
            token.provide("another token");
            whenOpen({"B", "A"}, [&] {
                const auto now = *standIn.newest<ShowAlerts>();
                EXPECT_EQ(now.alerts[1].number, before.alerts[0].number) << "another window opened";
                EXPECT_EQ(now.alerts[1].activationToken, "another token");
                EXPECT_NE(now.front, before.front);
                answer(1);
            });
            EXPECT_EQ(run("A"), AlertResponse::secondButton) << "the newest caller gets the answer at once";
            whenOpen({"B"}, [&] { answer(0); });
        });
        EXPECT_EQ(run("B"), AlertResponse::firstButton);
    });
    EXPECT_EQ(run("A"), AlertResponse::aborted) << "the earlier caller gets no answer";
    EXPECT_EQ(standIn.starts(), 1U);
}

TEST_F(ProcessAlertPresenterTest, BringsALowerAlertAboveTheOthersEvenIfNoFurtherCallerMayWait) {
    std::size_t waiting = 0;
    std::function<void()> alternate = [&] {
        ++waiting;
        const std::string title = waiting % 2 == 1 ? "A" : "B";
        const Titles titles = waiting == 1 ? Titles{"A"} : waiting % 2 == 1 ? Titles{"B", "A"} : Titles{"A", "B"};
        whenOpen(titles, waiting < ProcessAlertPresenter::mostNested ? alternate : std::function<void()>([&] {
                     EXPECT_EQ(open(), (Titles{"A", "B"}));
                     EXPECT_EQ(run("A"), AlertResponse::aborted);
                     whenOpen({"B", "A"}, [&] {
                         answer(0);
                         whenOpen({"B"}, [&] { answer(0); });
                     });
                 }));
        run(title);
        --waiting;
    };
    alternate();
    EXPECT_EQ(waiting, 0U);
}

TEST_F(ProcessAlertPresenterTest, LetsAFewCallersWaitAndAbortsFurtherAlerts) {
    Titles titles;
    std::function<void()> openNext;
    const std::function<void()> tryOneMore = [&] {
        EXPECT_EQ(run("one too many"), AlertResponse::aborted);
        EXPECT_EQ(open(), titles);
        answer(0);
    };
    openNext = [&] {
        const std::string title = std::to_string(titles.size());
        titles.push_back(title);
        whenOpen(titles, titles.size() < ProcessAlertPresenter::mostNested ? openNext : tryOneMore);
        EXPECT_EQ(run(title), AlertResponse::firstButton);
        titles.pop_back();
        if (!titles.empty()) whenOpen(titles, [&] { answer(0); });
    };
    openNext();
    EXPECT_EQ(titles, Titles{});
}

TEST_F(ProcessAlertPresenterTest, AcceptsEachAnswerOnceAndNoneForAClosedAlert) {
    std::uint64_t first = 0;
    whenOpen({"A"}, [&] {
        first = standIn.alerts()[0].number;
        answer(0);
        answer(1);
    });
    EXPECT_EQ(run("A"), AlertResponse::firstButton);
    whenOpen({"B"}, [&] {
        standIn.send(AlertAnswered{first, 0});
        answer(1);
    });
    EXPECT_EQ(run("B"), AlertResponse::secondButton);
}

TEST_F(ProcessAlertPresenterTest, AbortsAllWhenTheProcessDiesAndShowsNoneAgain) {
    standIn.process().show(ShowTray());
    Titles returned;
    whenOpen({"A"}, [&] {
        whenOpen({"A", "B"}, [&] { standIn.kill(); });
        EXPECT_EQ(run("B"), AlertResponse::aborted);
        returned.emplace_back("B");
    });
    EXPECT_EQ(run("A"), AlertResponse::aborted);
    returned.emplace_back("A");
    EXPECT_EQ(returned, (Titles{"B", "A"}));
    standIn.turnUntil([&] { return standIn.starts() == 2 && standIn.newest<ShowTray>(); });
    standIn.let(20ms);
    EXPECT_EQ(open(), Titles{});
    whenOpen({"C"}, [&] { answer(0); });
    EXPECT_EQ(run("C"), AlertResponse::firstButton);
}

TEST_F(ProcessAlertPresenterTest, AbortsIfTheProgramIsMissing) {
    standIn.remove();
    for (int i = 0; i < 3; ++i) EXPECT_EQ(run("A"), AlertResponse::aborted);
    standIn.process().show(ShowTray());  // the process cannot be started for the tray either
    EXPECT_EQ(run("A"), AlertResponse::aborted);
}

TEST_F(ProcessAlertPresenterTest, AbortsWithoutADisplay) {
    Environment environment;
    environment.unset({"WAYLAND_DISPLAY", "DISPLAY"});
    WindowProcess process(loop, windowProgram);
    ProcessAlertPresenter unseen(loop, process, token);
    EXPECT_EQ(unseen.runModal({"A", "text", {"OK"}}), AlertResponse::aborted);
}

TEST_F(ProcessAlertPresenterTest, KeepsTheLoopRunningWhileTheProcessHangs) {
    int turns = 0;
    std::function<void()> goOn = [&] {
        if (++turns < 100) return loop.async(goOn);
        whenOpen({"A"}, [&] { loop.stop(); });
        alerts.runModal({std::string(3'000'000, 'x'), "", {}});
    };
    whenOpen({"A"}, [&] {
        ::kill(standIn.pid(), SIGSTOP);
        goOn();
    });
    EXPECT_EQ(run("A"), AlertResponse::aborted);
    EXPECT_EQ(turns, 100);
}

TEST_F(ProcessAlertPresenterTest, AbortsAllAtOnceWhenTheLoopStopsAndOpensNoneAfterwards) {
    Titles returned;
    whenOpen({"A"}, [&] {
        whenOpen({"A", "B"}, [&] {
            loop.stop();
            EXPECT_EQ(run("C"), AlertResponse::aborted);
            returned.emplace_back("C");
        });
        EXPECT_EQ(run("B"), AlertResponse::aborted);
        returned.emplace_back("B");
    });
    EXPECT_EQ(run("A"), AlertResponse::aborted);
    returned.emplace_back("A");
    EXPECT_EQ(returned, (Titles{"C", "B", "A"}));
    EXPECT_EQ(run("D"), AlertResponse::aborted);
}

TEST_F(ProcessAlertPresenterTest, StartsNothingOnceTheLoopHasStopped) {
    loop.stop();
    EXPECT_EQ(run("A"), AlertResponse::aborted);
    EXPECT_FALSE(standIn.isRunning());
}

}  // namespace
}  // namespace kovra
