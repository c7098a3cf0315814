#include <algorithm>
#include <csignal>

#include "tests/platform/linux/windows/WindowProcessRig.h"
#include "tests/support/linux/OwnResources.h"
#include "tests/support/posix/OwnProcess.h"

namespace kovra {
namespace {

class WindowProcessMessagesTest : public WindowProcessRig {
  protected:
    // Waits until the process has received this text. It has then received everything that was sent before.
    void waitUntilShown(const std::string& text) {
        waitFor([&] { return read("shown").find(text) != std::string::npos; });
    }
};

TEST_F(WindowProcessMessagesTest, ForwardsTheUsersChoices) {
    use(R"(echo '{"is":"itemChosen","position":4}
no message
{"is":"itemChosen","position":0}' >&3
exec cat <&3 >/dev/null)");
    show("tip");
    waitFor([&] { return chosen.size() == 2; });
    EXPECT_EQ(chosen, (std::vector<std::size_t>{4, 0}));
}

TEST_F(WindowProcessMessagesTest, ReportsThatEverythingIsShownAtTheReplyToTheLastRequest) {
    use(R"(sed -u -n 's/"ping"/"pong"/p' <&3 >&3)");
    int showings = 0;
    const auto token = window->listenForShowing([&] { ++showings; });
    show("one");
    EXPECT_TRUE(window->shows<ShowTray>());
    EXPECT_FALSE(window->shows<ShowWindow>());
    EXPECT_FALSE(window->shows<ShowAlerts>());
    waitFor([&] { return showings == 1; });
    show("two");
    show("three");
    waitFor([&] { return showings == 2; });
    let(100ms);
    EXPECT_EQ(showings, 2);  // the first reply of the two reported nothing
}

TEST_F(WindowProcessMessagesTest, ForwardsTheLastChoiceOfAProcessThatDied) {
    use(R"(echo '{"is":"itemChosen","position":7}' >&3)");
    show("tip");
    waitFor([&] { return ends > 0; });
    EXPECT_EQ(chosen.size(), static_cast<std::size_t>(ends));
}

TEST_F(WindowProcessMessagesTest, NeitherBlocksNorGrowsWhileTheProcessReadsNothing) {
    use("echo $$ >$here/pid; exec sleep 1000");
    show("tip");
    waitFor([&] { return pid() > 0; });
    const std::string long_(20'000, 'x');
    for (int i = 0; i < 100; ++i) show(long_);
    const std::size_t before = bytesInUse();
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < 1'000; ++i) {
        show(long_);
        if (i % 100 == 0) let(1ms);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, limit);
    EXPECT_EQ(ends, 0);
    EXPECT_LT(bytesInUse(), before + 200'000);  // although 20 MB were sent
}

TEST_F(WindowProcessMessagesTest, ResumesWritingWhenTheProcessReadsAgain) {
    use("echo $$ >$here/pid; while [ ! -e $here/go ]; do sleep 0.01; done; exec cat <&3 >$here/shown");
    show("tip");
    waitFor([&] { return pid() > 0; });
    for (int i = 0; i < 50; ++i) show(std::string(100'000, 'x'));
    show("the newest");
    writeFile(folder / "go", "go");
    waitFor([&] { return read("shown").find("the newest") != std::string::npos; });
    const std::string shown = read("shown");
    EXPECT_LT(std::count(shown.begin(), shown.end(), '\n'), 10);
}

TEST_F(WindowProcessMessagesTest, StartsForAnEventAndStaysUntilItIsReleased) {
    use("echo >>$here/starts; exec cat <&3 >>$here/shown");
    popUp(71);
    popUp(72);
    waitUntilShown("\"x\":72");
    EXPECT_NE(read("shown").find("\"x\":71"), std::string::npos);
    popUp(73);
    waitUntilShown("\"x\":73");
    EXPECT_EQ(starts(), 1U);
    window->release();
    waitFor([&] { return !hasChildren(); });
    EXPECT_EQ(ends, 0);
}

TEST_F(WindowProcessMessagesTest, IsNotStartedAgainForAnEventWhenItIsKilled) {
    use("echo >>$here/starts; echo $$ >$here/pid; exec cat <&3 >/dev/null");
    popUp(71);
    waitFor([&] { return pid() > 0; });
    ::kill(pid(), SIGKILL);
    waitFor([&] { return ends == 1 && !hasChildren(); });
    let(50ms);
    EXPECT_EQ(starts(), 1U);
    window->release();
    popUp(72);
    waitFor([&] { return starts() == 2; });
}

TEST_F(WindowProcessMessagesTest, DoesNotRepeatAnEventToALaterProcess) {
    use("echo >>$here/starts; echo $$ >$here/pid; exec cat <&3 >$here/shown");
    show("state");
    popUp(71);
    waitFor([&] { return read("shown").find("\"x\":71") != std::string::npos; });
    ::kill(pid(), SIGKILL);
    waitFor([&] { return starts() == 2 && read("shown").find("state") != std::string::npos; });
    popUp(72);
    waitUntilShown("\"x\":72");
    EXPECT_EQ(read("shown").find("\"x\":71"), std::string::npos);
}

TEST_F(WindowProcessMessagesTest, StaysWhenItIsReleasedWhileThereIsSomethingToShow) {
    use("echo >>$here/starts; exec cat <&3 >>$here/shown");
    popUp(71);
    show("state");
    waitUntilShown("state");
    window->release();
    show("later");
    waitUntilShown("later");
    EXPECT_EQ(starts(), 1U);
    window->hideTray();
    waitFor([&] { return !hasChildren(); });
}

TEST_F(WindowProcessMessagesTest, StartsImmediatelyForAnEventEvenAfterItWasGivenUp) {
    use("echo >>$here/starts");
    show("tip");
    waitFor([&] { return ends == 4; });
    popUp(71);
    waitFor([&] { return ends == 5; });
    let(50ms);
    EXPECT_EQ(starts(), 5U);
}

TEST_F(WindowProcessMessagesTest, SendsTheSameStateOnce) {
    use("exec cat <&3 >$here/shown");
    const auto shownStates = [&] {
        const std::string shown = read("shown");
        std::ptrdiff_t count = 0;
        for (auto at = shown.find("showTray"); at != std::string::npos; at = shown.find("showTray", at + 1)) ++count;
        return count;
    };
    int differing = 0;
    for (const char* tip : {"one", "two", "one"}) {
        ++differing;
        for (int i = 0; i < 3; ++i) {
            show(tip);
            waitFor([&] { return shownStates() >= differing; });
        }
    }
    show("last");
    waitUntilShown("last");
    EXPECT_EQ(shownStates(), 4);
}

TEST_F(WindowProcessMessagesTest, RemovesOneStateWhileTheOthersStay) {
    use("exec cat <&3 >$here/shown");
    show("tip");
    showWindow();
    showAlert();
    waitFor([&] { return read("shown").find("\"number\":7") != std::string::npos; });
    window->hideTray();
    waitFor([&] { return read("shown").ends_with("{\"is\":\"hideTray\"}\n"); });
    window->closeAlerts();
    waitFor([&] { return read("shown").ends_with("{\"alerts\":[],\"is\":\"showAlerts\"}\n"); });
    let(2 * linger);
    EXPECT_TRUE(hasChildren());
    window->hideWindow();
    waitFor([&] { return read("shown").ends_with("{\"is\":\"hideWindow\"}\n"); });
}

TEST_F(WindowProcessMessagesTest, ShowsTheRemainingStatesAgainAfterItDied) {
    use("echo >>$here/starts; echo $$ >$here/pid; exec cat <&3 >$here/shown");
    const auto closing = window->listenForEnd([&] { window->hideWindow(); });
    show("tip");
    showWindow();
    waitFor([&] { return read("shown").find("showWindow") != std::string::npos; });
    ::kill(pid(), SIGKILL);
    waitFor([&] { return starts() == 2 && read("shown").find("tip") != std::string::npos; });
    show("later");
    waitUntilShown("later");
    EXPECT_EQ(read("shown").find("indow"), std::string::npos);
}

}  // namespace
}  // namespace kovra
