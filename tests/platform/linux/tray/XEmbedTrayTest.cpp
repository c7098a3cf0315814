#include "BLE_kovra/platform/linux/tray/XEmbedTray.h"

#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/platform/linux/tray/ItemOnScreen.h"
#include "tests/platform/linux/tray/Panel.h"
#include "tests/support/linux/PrivateBus.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;

// The program trayer, a tray that supports only XEmbed, in the top left corner of the screen. The destructor kills it.
class Trayer {
  public:
    explicit Trayer(std::vector<std::string> look = {}) {
        std::vector<std::string> words{"trayer",      "--edge",  "top",      "--align", "left",
                                       "--widthtype", "request", "--height", "24"};
        words.insert(words.end(), look.begin(), look.end());
        std::vector<char*> arguments;
        for (std::string& each : words) arguments.push_back(each.data());
        arguments.push_back(nullptr);
        EXPECT_EQ(::posix_spawnp(&pid_, "trayer", nullptr, nullptr, arguments.data(), environ), 0);
    }
    ~Trayer() {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }
    Trayer(const Trayer&) = delete;
    Trayer& operator=(const Trayer&) = delete;

  private:
    pid_t pid_ = 0;
};

Drawing pad(bool hasSlash) {
    Drawing drawing{.name = "pad", .size = {18, 18}, .strokes = {}};
    drawing.strokes.push_back({RoundedRectangle{.origin = {2.5, 4}, .size = {13, 10}, .cornerRadii = {2, 2}}, 1.2});
    if (hasSlash) drawing.strokes.push_back({Segment{.from = {3, 3}, .to = {15, 15}}, 1.6});
    return drawing;
}

// The item with its front for XEmbed trays. The tests start the trays.
class XEmbedTrayTest : public ItemOnScreen {
  protected:
    XEmbedTrayTest() {
        show(false);
        item.button()->setToolTip("Plain & <b>literal</b>");
        auto front = std::make_unique<XEmbedTray>(fakeQueue, xTray, look, window, item);
        tray = front.get();
        item.add(std::move(front));
    }
    void show(bool hasSlash) {
        item.button()->setImage(pad(hasSlash));
        item.button()->setImageIsTemplate(true);
    }

    std::optional<Onlooker::Place> icon() { return onlooker.window("Plain & <b>literal</b>"); }
    Onlooker::Place paintedIcon() {
        return waitFor<Onlooker::Place>([&]() -> std::optional<Onlooker::Place> {
            const auto place = icon();
            return place && place->width > 10 && onlooker.colors(*place).size() > 2 ? place : std::nullopt;
        });
    }
    XTray xTray{*x};
    PanelLook look{IconLook::recolored};
    XEmbedTray* tray = nullptr;
};

TEST_F(XEmbedTrayTest, ShowsTheIconAndTheSlash) {
    const Trayer trayer;
    fakeQueue.advance(XEmbedTrayChoice::grace);
    const auto place = paintedIcon();
    EXPECT_GE(place.width, 20);
    EXPECT_LE(place.width, 24);
    EXPECT_EQ(place.height, 22);
    const auto plain = onlooker.pixels(place);
    show(true);
    waitUntil([&] { return onlooker.pixels(place) != plain; });
    const auto slashed = onlooker.pixels(place);
    show(false);
    waitUntil([&] { return onlooker.pixels(place) == plain; });
    EXPECT_NE(slashed, plain);
}

TEST_F(XEmbedTrayTest, PaintsTheIconInTheLookThatSuitsTheTray) {
    // So thick a line covers whole pixels.
    item.button()->setImage(
        {.name = "line", .size = {18, 18}, .strokes = {{Segment{.from = {3, 9}, .to = {15, 9}}, 6}}});
    item.button()->setImageIsTemplate(true);
    const Trayer trayer;
    fakeQueue.advance(XEmbedTrayChoice::grace);
    const auto place = paintedIcon();
    const auto hasColors = [&](bool dark, bool light) {
        const auto colors = onlooker.colors(place);
        return colors.contains(darkInk) == dark && colors.contains(lightInk) == light;
    };
    const auto ink = [&] { return onlooker.pixels({place.x + place.width / 2, place.y + 11, 1, 1}).at(0); };
    waitUntil([&] { return ink() == lightInk; });
    look.set(IconLook::outlinedDark);
    waitUntil([&] { return ink() == darkInk; });
    look.set(IconLook::onLight);
    waitUntil([&] { return hasColors(true, false); });
    look.set(IconLook::onDark);
    waitUntil([&] { return hasColors(false, true); });
}

TEST_F(XEmbedTrayTest, NamesTheIconForScreenReadersByItsToolTip) {
    const Trayer trayer;
    fakeQueue.advance(XEmbedTrayChoice::grace);
    paintedIcon();
    item.button()->setToolTip("Another");
    waitUntil([&] { return onlooker.window("Another") && !icon(); });
}

TEST_F(XEmbedTrayTest, ShowsTheIconInATrayThatStartsLate) {
    fakeQueue.advance(XEmbedTrayChoice::grace);
    let(100ms);
    EXPECT_FALSE(icon());
    const Trayer trayer;
    paintedIcon();
}

TEST_F(XEmbedTrayTest, LeavesTheIconToAHostOfTheWatcherThatItFollows) {
    PrivateBus daemon("DBUS_SESSION_BUS_ADDRESS");
    SessionBus bus(loop);
    StatusNotifierWatcher watcher(bus);
    const Trayer trayer;
    std::optional<Panel> panel(std::in_place, loop);
    tray->follow(watcher);
    waitUntil([&] { return watcher.hasHost(); });
    fakeQueue.advance(XEmbedTrayChoice::grace);
    let(100ms);
    EXPECT_FALSE(icon());
    panel.reset();
    waitUntil([&] { return !watcher.hasHost(); });
    fakeQueue.advance(XEmbedTrayChoice::grace);
    paintedIcon();
    panel.emplace(loop);
    waitUntil([&] { return !icon(); });
}

TEST_F(XEmbedTrayTest, ShowsTheIconAgainInATrayThatWasKilledAndRestarted) {
    fakeQueue.advance(XEmbedTrayChoice::grace);
    for (int round = 0; round < 2; ++round) {
        {
            const Trayer trayer;
            paintedIcon();
        }
        waitUntil([&] { return !icon() && windowProcesses().empty(); });
    }
}

TEST_F(XEmbedTrayTest, OpensTheMenuForTheLeftAndForTheRightButton) {
    const Trayer trayer;
    fakeQueue.advance(XEmbedTrayChoice::grace);
    const auto place = paintedIcon();
    for (const std::uint8_t button : {XCB_BUTTON_INDEX_1, XCB_BUTTON_INDEX_3}) {
        onlooker.click(button, place);
        const auto opened = openedMenu();
        EXPECT_GE(opened.y, place.y + place.height) << "it covers the icon";
        onlooker.click(button, place);  // closes the menu
        waitUntil([&] { return !menu(); });
    }
    EXPECT_TRUE(done.empty());
}

TEST_F(XEmbedTrayTest, PerformsAChoiceByMouse) {
    const Trayer trayer;
    fakeQueue.advance(XEmbedTrayChoice::grace);
    const auto place = paintedIcon();
    onlooker.click(XCB_BUTTON_INDEX_1, place);
    auto opened = openedMenu();
    onlooker.click(XCB_BUTTON_INDEX_1, opened.x + 30, opened.y + opened.height - 10);
    waitUntil([&] { return done == std::vector<std::string>{"quit"}; });
    waitUntil([&] { return !menu(); });
    onlooker.click(XCB_BUTTON_INDEX_3, place);
    opened = openedMenu();
    onlooker.click(XCB_BUTTON_INDEX_1, opened.x + 30, opened.y + 10);
    waitUntil([&] { return done == std::vector<std::string>{"quit", "toggle"}; });
}

TEST_F(XEmbedTrayTest, PerformsAChoiceByKeyboardAndSkipsTheHint) {
    constexpr xcb_keycode_t down = 116, enter = 36;
    const Trayer trayer;
    fakeQueue.advance(XEmbedTrayChoice::grace);
    onlooker.click(XCB_BUTTON_INDEX_1, paintedIcon());
    openedMenu();
    onlooker.tap(down);
    onlooker.tap(down);
    onlooker.tap(enter);
    waitUntil([&] { return done == std::vector<std::string>{"quit"}; });
}

TEST_F(XEmbedTrayTest, NeverChoosesTheHint) {
    const Trayer trayer;
    fakeQueue.advance(XEmbedTrayChoice::grace);
    onlooker.click(XCB_BUTTON_INDEX_1, paintedIcon());
    const auto opened = openedMenu();
    onlooker.click(XCB_BUTTON_INDEX_1, opened.x + 30, opened.y + opened.height / 2 - 6);
    let(200ms);
    EXPECT_TRUE(done.empty());
    EXPECT_TRUE(menu());
}

TEST_F(XEmbedTrayTest, ShowsTheActualCheckMarkAndNotTheClickedOne) {
    const Trayer trayer;
    fakeQueue.advance(XEmbedTrayChoice::grace);
    const auto place = paintedIcon();
    const auto openMenu = [&] {
        onlooker.click(XCB_BUTTON_INDEX_1, 600, 400);  // outside every item
        onlooker.click(XCB_BUTTON_INDEX_1, place);
        return openedMenu();
    };
    const auto mark = [&](const Onlooker::Place& at) { return onlooker.pixels({at.x + 4, at.y + 2, 20, 20}); };
    auto opened = openMenu();
    waitUntil([&] { return onlooker.colors(opened).size() > 10; });
    const auto checked = mark(opened);
    onlooker.click(XCB_BUTTON_INDEX_1, opened.x + 30, opened.y + 10);  // an item whose action changes nothing
    waitUntil([&] { return done.size() == 1 && !menu(); });
    opened = openMenu();
    waitUntil([&] { return mark(opened) == checked; });
    item.setState(toggleTag, MenuItemState::off);
    waitUntil([&] { return mark(opened) != checked; });
    item.setState(toggleTag, MenuItemState::on);
    waitUntil([&] { return mark(opened) == checked; });
}

TEST_F(XEmbedTrayTest, StartsTheWindowProcessAgainWhenItIsKilled) {
    const Trayer trayer;
    fakeQueue.advance(XEmbedTrayChoice::grace);
    paintedIcon();
    int deaths = 0;
    const auto listening = window.listenForEnd([&] { ++deaths; });
    const auto before = windowProcesses();
    ASSERT_EQ(before.size(), 1U);
    ::kill(before.front(), SIGKILL);
    waitUntil([&] { return deaths == 1 && windowProcesses().size() == 1 && windowProcesses() != before; });
    const auto place = paintedIcon();
    const auto plain = onlooker.pixels(place);
    show(true);
    waitUntil([&] { return icon() == place && onlooker.pixels(place) != plain; });
    EXPECT_EQ(deaths, 1);
}

TEST_F(XEmbedTrayTest, RemovesTheIconEvenIfTheProcessKeepsRunning) {
    const Trayer trayer;
    fakeQueue.advance(XEmbedTrayChoice::grace);
    paintedIcon();
    const auto before = windowProcesses();
    window.send(PopUpMenu{
        .x = 0, .y = 0, .asked = {}, .menu = {}});  // the request has expired, but it keeps the process running
    tray->setHostPresent(true);
    waitUntil([&] { return !icon(); });
    EXPECT_EQ(windowProcesses(), before);
    tray->setHostPresent(false);
    fakeQueue.advance(XEmbedTrayChoice::grace);
    paintedIcon();
    EXPECT_EQ(windowProcesses(), before);
    window.release();
}

TEST_F(XEmbedTrayTest, LeavesTheTrayToAStatusNotifierHostThatAppears) {
    const Trayer trayer;
    fakeQueue.advance(XEmbedTrayChoice::grace);
    paintedIcon();
    tray->setHostPresent(true);
    waitUntil([&] { return !icon() && windowProcesses().empty(); });
    tray->setHostPresent(false);
    fakeQueue.advance(XEmbedTrayChoice::grace);
    paintedIcon();
}

TEST_F(XEmbedTrayTest, StartsNothingIfThereIsAStatusNotifierHost) {
    const Trayer trayer;
    tray->setHostPresent(true);
    fakeQueue.advance(1h);
    show(true);
    let(200ms);
    EXPECT_TRUE(windowProcesses().empty());
}

}  // namespace
}  // namespace kovra
