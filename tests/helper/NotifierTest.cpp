#include "helper/Notifier.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "tests/helper/ServiceManager.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra::helper {
namespace {

using Result = Notifier::Result;

TEST(NotifierTest, SendsAStateToAPathOrAnAbstractSocket) {
    const TempFolder folder;
    for (const std::string& name : {folder / "notify", "@kovra-notifier-test-" + std::to_string(::getpid())}) {
        const ServiceManager manager(name);
        const Notifier notifier(name.c_str());
        EXPECT_EQ(notifier.notify("READY=1"), Result::sent) << name;
        EXPECT_EQ(notifier.notify("WATCHDOG=1"), Result::sent) << name;
        EXPECT_EQ(manager.receive(), "READY=1") << name;
        EXPECT_EQ(manager.receive(), "WATCHDOG=1") << name;
    }
}

TEST(NotifierTest, DoesNotWaitForRoomInAFullQueue) {
    const TempFolder folder;
    const std::string name = folder / "notify";
    const ServiceManager manager(name);
    const Notifier notifier(name.c_str());
    manager.fill();
    ::alarm(20);  // ends the test if the call waits
    EXPECT_EQ(notifier.notify("READY=1"), Result::full);
    ::alarm(0);
    while (!manager.receive().empty()) continue;
    EXPECT_EQ(notifier.notify("READY=1"), Result::sent);
    EXPECT_EQ(manager.receive(), "READY=1");
}

TEST(NotifierTest, FailsWithoutAServiceManager) {
    const TempFolder folder;
    for (const std::string& name : {std::string(), std::string("notify"), folder / "missing", std::string(300, '/')})
        EXPECT_EQ(Notifier(name.c_str()).notify("READY=1"), Result::failed) << name;
    EXPECT_EQ(Notifier(nullptr).notify("READY=1"), Result::failed);
}

}  // namespace
}  // namespace kovra::helper
