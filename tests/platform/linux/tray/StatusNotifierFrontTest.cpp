#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/platform/linux/bus/Forger.h"
#include "tests/platform/linux/tray/StatusNotifierRig.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;

TEST(StatusNotifierFrontTest, RegistersWithARunningWatcher) {
    StatusNotifierRig rig;
    rig.showInPanel();
    EXPECT_EQ(rig.panel->items.size(), 1U);
    // GNOME's extension 46 may lose an item that is registered by a name which can change its owner.
    EXPECT_TRUE(rig.panel->item().starts_with(":")) << rig.panel->item();
}

TEST(StatusNotifierFrontTest, RegistersAsSoonAsItHasAMenuBeforeItsLoopRuns) {
    StatusNotifierRig rig;
    ASSERT_GE(sd_bus_flush(rig.bus.bus()), 0);  // establishes the connection
    SdEventLoop loopOfThePanel;
    Panel panel(loopOfThePanel);
    rig.item->setMenu(rig.menu());
    EXPECT_TRUE(panel.findsItem());
}

TEST(StatusNotifierFrontTest, RegistersWithAWatcherThatStartsLate) {
    StatusNotifierRig rig;
    rig.showIcon("plain", "off");
    turnsWithin(rig.loop, 100ms);
    rig.showInPanel();
    EXPECT_EQ(rig.panel->itemProperty("IconName"), "\"plain\"");
}

TEST(StatusNotifierFrontTest, RegistersAgainWithAWatcherThatWasRestarted) {
    StatusNotifierRig rig;
    rig.showInPanel();
    for (int restart = 0; restart < 3; ++restart) {
        rig.panel.reset();
        turnsWithin(rig.loop, 20ms);
        rig.showInPanel();
        EXPECT_EQ(rig.panel->items.size(), 1U);
        EXPECT_EQ(rig.panel->itemProperty("IconName"), "\"plain\"");
    }
}

TEST(StatusNotifierFrontTest, RegistersAgainAfterTheSessionBusWasAway) {
    StatusNotifierRig rig;
    rig.showInPanel();
    rig.panel.reset();
    rig.daemon.end();
    ASSERT_TRUE(turnUntil(rig.loop, [&] { return rig.bus.bus() == nullptr; }));
    rig.showIcon("slashed", "on");
    rig.daemon.restart();
    rig.panel.emplace(rig.loop);
    ASSERT_TRUE(rig.panel->findsItem());
    EXPECT_EQ(rig.panel->itemProperty("IconName"), "\"slashed\"");
    rig.panel->click(1);
    EXPECT_EQ(rig.takeDone(), "Mute; ");
}

TEST(StatusNotifierFrontTest, RegistersOnceAHostAppearsWithAWatcherThatRefusedItBefore) {
    StatusNotifierRig rig;
    rig.panel.emplace(rig.loop, Panel::Hosts::none);
    rig.panel->refusesItems = true;
    rig.panel->settle(rig.program());
    EXPECT_TRUE(rig.panel->items.empty());
    rig.panel->refusesItems = false;
    rig.panel->setHost(Panel::Hosts::one);
    EXPECT_TRUE(rig.panel->findsItem());
}

TEST(StatusNotifierFrontTest, IgnoresAHostThatAnotherClientForges) {
    StatusNotifierRig rig;
    rig.panel.emplace(rig.loop, Panel::Hosts::none);
    rig.panel->refusesItems = true;
    rig.panel->settle(rig.program());
    rig.panel->refusesItems = false;
    Forger(Forger::Bus::session)
        .send(rig.program(), "/StatusNotifierWatcher", "org.kde.StatusNotifierWatcher", "StatusNotifierHostRegistered",
              "");
    rig.panel->settle(rig.program());
    EXPECT_TRUE(rig.panel->items.empty());
}

TEST(StatusNotifierFrontTest, WorksWithoutASessionBus) {
    PrivateBus daemon("DBUS_SESSION_BUS_ADDRESS");
    daemon.end();
    SdEventLoop loop;
    SessionBus bus(loop);
    StatusNotifierWatcher watcher(bus);
    PanelLook look(IconLook::recolored);
    ActivationToken token;
    TrayStatusBar bar(loop, {[&](TrayItem& item) {
                          return std::make_unique<StatusNotifierFront>(item, bus, watcher, look, token, "", nullptr);
                      }});
    const auto item = bar.statusItem(StatusBar::variableLength);
    item->button()->setToolTip("off");
    EXPECT_LT(turnsWithin(loop, 50ms), 20);
    EXPECT_FALSE(watcher.hasHost());
}

TEST(StatusNotifierFrontTest, ReportsWhetherThereIsAHost) {
    StatusNotifierRig rig;
    std::string reports;
    const auto listening = rig.watcher.listen([&](bool hasHost) { reports += hasHost ? "host " : "none "; });
    const auto reported = [&](const std::string& words) {
        return turnUntil(rig.loop, [&] { return reports == words; });
    };
    rig.panel.emplace(rig.loop, Panel::Hosts::none);
    rig.panel->settle(rig.program());
    EXPECT_EQ(reports, "");
    rig.panel->setHost(Panel::Hosts::one);
    EXPECT_TRUE(reported("host "));
    rig.panel->setHost(Panel::Hosts::none);
    EXPECT_TRUE(reported("host none "));
    rig.panel->setHost(Panel::Hosts::one);
    EXPECT_TRUE(reported("host none host "));
    rig.panel.reset();
    EXPECT_TRUE(reported("host none host none "));
    rig.panel.emplace(rig.loop);
    EXPECT_TRUE(reported("host none host none host "));
    rig.daemon.end();
    EXPECT_TRUE(reported("host none host none host none "));
}

TEST(StatusNotifierFrontTest, KnowsWhetherTheIconIsShown) {
    using Icon = StatusNotifierWatcher::Icon;
    StatusNotifierRig rig;
    const auto becomes = [&](Icon icon) { return turnUntil(rig.loop, [&] { return rig.watcher.icon() == icon; }); };
    EXPECT_EQ(rig.watcher.icon(), Icon::unknown);
    EXPECT_TRUE(becomes(Icon::notShown));
    rig.panel.emplace(rig.loop);
    rig.panel->refusesItems = true;
    EXPECT_TRUE(becomes(Icon::unknown));
    rig.panel->settle(rig.program());
    EXPECT_EQ(rig.watcher.icon(), Icon::unknown) << "the panel has refused the icon";
    rig.panel.reset();
    EXPECT_TRUE(becomes(Icon::notShown));
    rig.panel.emplace(rig.loop);
    EXPECT_TRUE(becomes(Icon::shown));
}

TEST(StatusNotifierFrontTest, ReportsTheNameOfTheIconAndItsFolder) {
    StatusNotifierRig rig;
    rig.showInPanel();
    EXPECT_EQ(rig.panel->itemProperty("IconName"), "\"plain\"");
    EXPECT_EQ(rig.panel->itemProperty("IconThemePath"), "\"/folder/icons\"");
}

TEST(StatusNotifierFrontTest, ReportsTheIconAsPixmapsToo) {
    StatusNotifierRig rig;
    rig.showInPanel();
    EXPECT_EQ(rig.panel->itemProperty("IconPixmap"),
              "[(16 16 1024 bytes) (22 22 1936 bytes) (32 32 4096 bytes) (48 48 9216 bytes)]");
}

TEST(StatusNotifierFrontTest, ReportsTheNameOfTheIconInTheLookThatSuitsThePanel) {
    StatusNotifierRig rig;
    rig.showInPanel();
    rig.showIcon("pad-muted-symbolic", "on");
    rig.settle();
    rig.panel->signals();
    const std::pair<IconLook, const char*> looks[] = {{IconLook::onLight, "\"pad-muted-on-light-symbolic\""},
                                                      {IconLook::onDark, "\"pad-muted-on-dark-symbolic\""},
                                                      {IconLook::outlinedDark, "\"pad-muted-outlined-dark\""},
                                                      {IconLook::outlinedLight, "\"pad-muted-outlined-light\""},
                                                      {IconLook::recolored, "\"pad-muted-symbolic\""}};
    for (const auto& [look, name] : looks) {
        rig.look.set(look);
        EXPECT_EQ(rig.panel->signals(), "NewIcon; ");
        EXPECT_EQ(rig.panel->itemProperty("IconName"), name);
        rig.look.set(look);
        EXPECT_EQ(rig.panel->signals(), "");
    }
}

TEST(StatusNotifierFrontTest, RendersItsPixmapsInTheLookThatSuitsThePanel) {
    StatusNotifierRig rig;
    rig.showInPanel();
    Drawing line{.name = "line", .size = {1, 1}, .strokes = {{Segment{.from = {0, 0.5}, .to = {1, 0.5}}, 1}}};
    rig.item->button()->setImage(line);
    rig.settle();
    const auto firstPixel = [&] {
        sd_bus_message* made = nullptr;
        EXPECT_GE(sd_bus_message_new_method_call(rig.panel->bus(), &made, rig.panel->item().c_str(),
                                                 "/StatusNotifierItem", "org.freedesktop.DBus.Properties", "Get"),
                  0);
        const BusMessage call(made);
        EXPECT_GE(sd_bus_message_append(made, "ss", "org.kde.StatusNotifierItem", "IconPixmap"), 0);
        std::vector<int> pixel;
        const auto read = [](sd_bus_message* reply, void* context, sd_bus_error*) {
            const void* bytes = nullptr;
            std::size_t size = 0;
            EXPECT_GE(sd_bus_message_enter_container(reply, 'v', "a(iiay)"), 0);
            EXPECT_GE(sd_bus_message_enter_container(reply, 'a', "(iiay)"), 0);
            EXPECT_GE(sd_bus_message_enter_container(reply, 'r', "iiay"), 0);
            EXPECT_GE(sd_bus_message_skip(reply, "ii"), 0);
            EXPECT_GE(sd_bus_message_read_array(reply, 'y', &bytes, &size), 0);
            const auto* first = static_cast<const std::uint8_t*>(bytes);
            *static_cast<std::vector<int>*>(context) = std::vector<int>(first, first + 4);
            return 0;
        };
        sd_bus_slot* slot = nullptr;
        EXPECT_GE(sd_bus_call_async(rig.panel->bus(), &slot, made, read, &pixel, 0), 0);
        const BusSlot pending(slot);
        EXPECT_TRUE(turnUntil(rig.loop, [&] { return !pixel.empty(); }));
        return pixel;
    };
    rig.look.set(IconLook::onLight);
    EXPECT_EQ(firstPixel(), (std::vector<int>{255, 0x20, 0x20, 0x20}));
    rig.look.set(IconLook::onDark);
    EXPECT_EQ(firstPixel(), (std::vector<int>{255, 255, 255, 255}));
}

TEST(StatusNotifierFrontTest, IsAnActiveItemWithNothingButAMenu) {
    StatusNotifierRig rig;
    rig.showInPanel();
    const std::vector<std::pair<const char*, const char*>> properties{
        {"Category", "\"Hardware\""},
        {"Id", "\"ble-kovra\""},
        {"Title", "\"BLE-kovra\""},
        {"Status", "\"Active\""},
        {"WindowId", "0"},
        {"ItemIsMenu", "yes"},
        {"Menu", "/MenuBar"},
        {"OverlayIconName", "\"\""},
        {"OverlayIconPixmap", "[]"},
        {"AttentionIconName", "\"\""},
        {"AttentionIconPixmap", "[]"},
        {"AttentionMovieName", "\"\""},
    };
    for (const auto& [name, value] : properties) EXPECT_EQ(rig.panel->itemProperty(name), value) << name;
    const std::string all = rig.panel->call("/StatusNotifierItem", "org.freedesktop.DBus.Properties", "GetAll",
                                            [](BusWriter& writer) { writer.text("org.kde.StatusNotifierItem"); });
    for (const auto& [name, value] : properties) EXPECT_NE(all.find('"' + std::string(name) + '"'), std::string::npos);
}

TEST(StatusNotifierFrontTest, ShowsTheStateAndThenTheProgramNameInItsToolTip) {
    StatusNotifierRig rig;
    rig.showInPanel();
    rig.showIcon("plain", "a <b> & c");
    rig.settle();
    EXPECT_EQ(rig.panel->itemProperty("ToolTip"), "(\"\" [] \"a <b> & c\" \"BLE-kovra\")");
}

// GNOME's extension reads it at each change of the icon, and gives it to screen readers.
TEST(StatusNotifierFrontTest, DescribesItsIconByTheState) {
    StatusNotifierRig rig;
    rig.showInPanel();
    rig.showIcon("slashed", "off");
    rig.settle();
    EXPECT_EQ(rig.panel->itemProperty("IconAccessibleDesc"), "\"off\"");
}

TEST(StatusNotifierFrontTest, SignalsOnlyWhatHasChanged) {
    StatusNotifierRig rig;
    rig.showInPanel();
    rig.showIcon("slashed", "off");
    rig.settle();
    EXPECT_EQ(rig.panel->signals(), "NewIcon; ");
    rig.showIcon("slashed", "on");
    rig.settle();
    EXPECT_EQ(rig.panel->signals(), "NewToolTip; ");
    rig.item->setState(1, MenuItemState::off);
    rig.settle();
    EXPECT_EQ(rig.panel->signals(), "ItemsPropertiesUpdated [(1 [\"toggle-state\":0])] []; ");
}

// A monitor on the bus counts every message that the program sends, to any destination.
TEST(StatusNotifierFrontTest, SendsNothingWhenNothingChanges) {
    StatusNotifierRig rig;
    rig.showInPanel();
    int messages = 0;
    sd_bus* opened = nullptr;
    ASSERT_GE(sd_bus_new(&opened), 0);
    const BusHandle monitor(opened);
    ASSERT_GE(sd_bus_set_address(opened, std::getenv("DBUS_SESSION_BUS_ADDRESS")), 0);
    ASSERT_GE(sd_bus_set_bus_client(opened, 1), 0);
    ASSERT_GE(sd_bus_set_monitor(opened, 1), 0);
    ASSERT_GE(sd_bus_start(opened), 0);
    const char* unique = nullptr;
    ASSERT_GE(sd_bus_get_unique_name(rig.bus.bus(), &unique), 0);
    const std::string rule = "sender='" + std::string(unique) + "'";
    sd_bus_error error{};
    ASSERT_GE(
        sd_bus_call_method(opened, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus.Monitoring",
                           "BecomeMonitor", &error, nullptr, "asu", 1, rule.c_str(), 0U),
        0)
        << error.message;
    const auto count = [](sd_bus_message*, void* context, sd_bus_error*) {
        ++*static_cast<int*>(context);
        return 0;
    };
    ASSERT_GE(sd_bus_add_filter(opened, nullptr, count, &messages), 0);
    ASSERT_GE(sd_bus_attach_event(opened, rig.loop.event(), SD_EVENT_PRIORITY_NORMAL), 0);
    turnsWithin(rig.loop, 100ms);  // a last message of the bus to the monitor arrives
    messages = 0;
    for (int evaluation = 0; evaluation < 100; ++evaluation) {
        rig.item->setState(1, MenuItemState::on);
        rig.showIcon("plain", "off");
        rig.settle();
    }
    EXPECT_LT(turnsWithin(rig.loop, 200ms), 5);
    EXPECT_EQ(messages, 0);
    rig.showIcon("slashed", "off");
    EXPECT_TRUE(turnUntil(rig.loop, [&] { return messages == 1; }));
}

std::string click(StatusNotifierRig& rig, const char* method, int x, int y) {
    return rig.panel->call("/StatusNotifierItem", "org.kde.StatusNotifierItem", method,
                           [&](BusWriter& writer) { writer.integer(x).integer(y); });
}

TEST(StatusNotifierFrontTest, RequestsTheMenuAtEachReportedClick) {
    StatusNotifierRig rig;
    rig.showInPanel();
    EXPECT_EQ(click(rig, "Activate", 10, 20), "");
    EXPECT_EQ(click(rig, "SecondaryActivate", -5, 0), "");
    EXPECT_EQ(click(rig, "ContextMenu", 3'000, 2'000), "");
    EXPECT_EQ(rig.requests, (std::vector<std::pair<int, int>>{{10, 20}, {-5, 0}, {3'000, 2'000}}));
    EXPECT_EQ(rig.takeDone(), "");
}

TEST(StatusNotifierFrontTest, LeavesTheMenuToTheDesktopIfItCannotOpenIt) {
    StatusNotifierRig rig;
    rig.item.reset();
    rig.popUp = nullptr;
    rig.item = rig.bar.statusItem(StatusBar::variableLength);
    rig.showInPanel();
    const std::string description =
        rig.panel->call("/StatusNotifierItem", "org.freedesktop.DBus.Introspectable", "Introspect");
    EXPECT_NE(description.find("ProvideXdgActivationToken"), std::string::npos);
    EXPECT_EQ(click(rig, "SecondaryActivate", 10, 20), "");
    for (const char* method : {"Activate", "ContextMenu"}) {
        EXPECT_EQ(click(rig, method, 10, 20), "error org.freedesktop.DBus.Error.UnknownMethod");
        EXPECT_EQ(description.find('"' + std::string(method) + '"'), std::string::npos);
    }
}

TEST(StatusNotifierFrontTest, DescribesNothingAsOutdated) {
    StatusNotifierRig rig;
    rig.showInPanel();
    for (const char* object : {"/StatusNotifierItem", "/MenuBar"}) {
        const std::string description = rig.panel->call(object, "org.freedesktop.DBus.Introspectable", "Introspect");
        EXPECT_NE(description.find("<property"), std::string::npos);
        EXPECT_EQ(description.find("Deprecated"), std::string::npos) << description;
    }
}

TEST(StatusNotifierFrontTest, DoesNothingWhenItIsScrolled) {
    StatusNotifierRig rig;
    rig.showInPanel();
    EXPECT_EQ(rig.panel->call("/StatusNotifierItem", "org.kde.StatusNotifierItem", "Scroll",
                              [](BusWriter& writer) { writer.integer(120).text("vertical"); }),
              "");
    EXPECT_EQ(rig.takeDone(), "");
    EXPECT_TRUE(rig.requests.empty());
}

TEST(StatusNotifierFrontTest, KeepsTheNewestActivationTokenForOneWindow) {
    StatusNotifierRig rig;
    rig.showInPanel();
    const auto provide = [&](const std::string& token) {
        return rig.panel->call("/StatusNotifierItem", "org.kde.StatusNotifierItem", "ProvideXdgActivationToken",
                               [&](BusWriter& writer) { writer.text(token); });
    };
    std::vector<std::string> clicks;
    rig.token.onClick = [&](const std::string& token) { clicks.push_back(token); };
    EXPECT_EQ(rig.token.take(), "");
    EXPECT_EQ(provide("one"), "");
    EXPECT_EQ(provide("two"), "");
    EXPECT_EQ(rig.token.take(), "two");
    EXPECT_EQ(rig.token.take(), "");
    provide("three");
    EXPECT_EQ(provide(std::string(100'000, 'x')), "");
    EXPECT_EQ(rig.token.take(), "");
    EXPECT_EQ(clicks, (std::vector<std::string>{"one", "two", "three"}));
}

TEST(StatusNotifierFrontTest, IsNotRegisteredAgainAfterTheEndOfItsItem) {
    StatusNotifierRig rig;
    rig.showInPanel();
    rig.item.reset();
    EXPECT_EQ(rig.panel->itemProperty("Id"), "error org.freedesktop.DBus.Error.UnknownObject");
    rig.panel.reset();
    rig.panel.emplace(rig.loop);
    rig.panel->settle(rig.program());
    EXPECT_TRUE(rig.panel->items.empty());
}

TEST(StatusNotifierFrontTest, SurvivesLosingTheBusInTheMiddleOfAMessage) {
    StatusNotifierRig rig;
    rig.showInPanel();
    rig.daemon.end();
    for (int change = 0; change < 20; ++change) {
        rig.showIcon(change % 2 == 0 ? "slashed" : "plain", "off");
        rig.item->setState(1, change % 2 == 0 ? MenuItemState::on : MenuItemState::off);
        rig.item->setMenu(rig.menu());
        rig.settle();
    }
    EXPECT_EQ(rig.bus.bus(), nullptr);
}

}  // namespace
}  // namespace kovra
