#include "BLE_kovra/platform/linux/control/HelperService.h"

#include <gtest/gtest.h>
#include <sys/acl.h>
#include <sys/stat.h>
#include <systemd/sd-bus.h>

#include <array>
#include <atomic>
#include <cstring>
#include <filesystem>
#include <initializer_list>
#include <optional>
#include <string>
#include <thread>

#include "BLE_kovra/platform/linux/bus/BusMessage.h"
#include "tests/support/Environment.h"
#include "tests/support/linux/PrivateBus.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra::control {
namespace {

using State = Service::State;

// A stand-in for systemd, which knows one unit.
class StandInSystemd {
  public:
    StandInSystemd() {
        sd_bus* bus = nullptr;
        EXPECT_GE(sd_bus_open_system(&bus), 0);
        bus_.reset(bus);
        EXPECT_GE(sd_bus_add_object_vtable(bus, nullptr, "/org/freedesktop/systemd1",
                                           "org.freedesktop.systemd1.Manager", managerTable.data(), this),
                  0);
        EXPECT_GE(
            sd_bus_add_object_vtable(bus, nullptr, "/unit", "org.freedesktop.systemd1.Unit", unitTable.data(), this),
            0);
        EXPECT_GE(sd_bus_request_name(bus, "org.freedesktop.systemd1", 0), 0);
    }
    ~StandInSystemd() { end(); }
    // Serves the bus from now on. The states must be set before.
    void serve() {
        thread_ = std::thread([this] {
            while (!hasEnded_) {
                constexpr std::uint64_t tenMilliseconds = 10'000;
                if (sd_bus_process(bus_.get(), nullptr) == 0) sd_bus_wait(bus_.get(), tenMilliseconds);
            }
        });
    }
    void end() {
        hasEnded_ = true;
        if (thread_.joinable()) thread_.join();
        hasEnded_ = false;
    }

    std::string load = "loaded";
    std::string active = "active";
    std::string unitFile = "enabled";
    bool refuses = false;

  private:
    static int loadUnit(sd_bus_message* call, void* context, sd_bus_error* error) {
        const char* name = nullptr;
        if (static_cast<StandInSystemd*>(context)->refuses || sd_bus_message_read(call, "s", &name) <= 0 ||
            name != std::string("ble-kovra-helper.service"))
            return sd_bus_error_set(error, SD_BUS_ERROR_ACCESS_DENIED, "Access denied");
        return answer(call, [](BusWriter& writer) { writer.path("/unit"); });
    }
    static int property(sd_bus*, const char*, const char*, const char* name, sd_bus_message* reply, void* context,
                        sd_bus_error*) {
        const auto* self = static_cast<const StandInSystemd*>(context);
        BusWriter writer(reply);
        writer.text(name == std::string("LoadState")     ? self->load
                    : name == std::string("ActiveState") ? self->active
                                                         : self->unitFile);
        return writer.result();
    }
    static constexpr std::array<sd_bus_vtable, 3> managerTable{{
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD("LoadUnit", "s", "o", loadUnit, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END,
    }};
    static constexpr std::array<sd_bus_vtable, 5> unitTable{{
        SD_BUS_VTABLE_START(0),
        SD_BUS_PROPERTY("LoadState", "s", property, 0, 0),
        SD_BUS_PROPERTY("ActiveState", "s", property, 0, 0),
        SD_BUS_PROPERTY("UnitFileState", "s", property, 0, 0),
        SD_BUS_VTABLE_END,
    }};

    BusHandle bus_;
    std::thread thread_;
    std::atomic<bool> hasEnded_ = false;
};

class HelperServiceTest : public testing::Test {
  protected:
    Service askedWith(const std::string& load, const std::string& active, const std::string& unitFile) {
        systemd_.load = load;
        systemd_.active = active;
        systemd_.unitFile = unitFile;
        systemd_.serve();
        Service service = helperService(processes_.path());
        systemd_.end();
        return service;
    }

    const TempFolder processes_;  // like /proc
    PrivateBus daemon_{"DBUS_SYSTEM_BUS_ADDRESS"};
    StandInSystemd systemd_;
};

TEST_F(HelperServiceTest, IsInTheStateThatSystemdReports) {
    EXPECT_EQ(askedWith("loaded", "active", "enabled").state, State::running);
    EXPECT_EQ(askedWith("loaded", "activating", "enabled").state, State::starting);
    EXPECT_EQ(askedWith("loaded", "inactive", "disabled").state, State::stopped);
    EXPECT_EQ(askedWith("loaded", "inactive", "disabled").unitState, "disabled");
    EXPECT_EQ(askedWith("loaded", "deactivating", "enabled").state, State::stopped);
    EXPECT_EQ(askedWith("loaded", "failed", "enabled").state, State::failed);
}

TEST_F(HelperServiceTest, IsUnknownWithTheReasonIfSystemdRefusesOrDoesNotAnswer) {
    systemd_.refuses = true;
    const Service refused = askedWith("loaded", "active", "enabled");
    EXPECT_EQ(refused.state, State::unknown);
    EXPECT_EQ(refused.error, "Access denied");
    const Service silent = helperService(processes_.path());
    EXPECT_EQ(silent.state, State::unknown);
    EXPECT_EQ(silent.error, "the system bus or systemd does not answer");
}

TEST_F(HelperServiceTest, RunsWithoutSystemdIfThereIsAProcessOfIt) {
    const auto addProcess = [&](const std::string& id, const std::string& user) {
        std::filesystem::create_directories(processes_ / id);
        writeFile(processes_ / id + "/status", "Name:\tble-kovra-helpe\nState:\tS (sleeping)\nUid:\t" + user + "\n");
    };
    addProcess("7", "3999999999");  // anybody may call a process so
    EXPECT_EQ(askedWith("not-found", "inactive", "").state, State::missing);
    addProcess("8", "0");
    EXPECT_EQ(askedWith("not-found", "inactive", "").state, State::running);
    EXPECT_EQ(askedWith("loaded", "failed", "enabled").state, State::failed);
}

// A flag in a folder, written by a service.
class HelperServiceFlagTest : public testing::Test {
  protected:
    void allow(const std::string& list) {
        acl_t entries = acl_from_text(list.c_str());
        ASSERT_NE(entries, nullptr);
        EXPECT_EQ(acl_set_file(path_.c_str(), ACL_TYPE_ACCESS, entries), 0) << std::strerror(errno);
        acl_free(entries);
    }

    const TempFolder folder_;
    const std::string path_ = folder_ / "state";
};

TEST_F(HelperServiceFlagTest, FindsTheWordAndItsTime) {
    for (const char* word : {"on", "off"}) {
        writeFile(path_, word);
        const Flag flag = readFlag(path_);
        EXPECT_TRUE(flag.isReadable);
        EXPECT_EQ(flag.word, word);
        ASSERT_TRUE(flag.written.has_value());
        struct stat status{};
        ASSERT_EQ(::stat(path_.c_str(), &status), 0);
        EXPECT_EQ(flag.written->seconds, status.st_mtim.tv_sec);
        EXPECT_EQ(flag.written->text.size(), std::string("2026-11-23 12:02:07").size());
        EXPECT_FALSE(flag.writer.has_value());
    }
}

TEST_F(HelperServiceFlagTest, TakesNothingElseForAWord) {
    for (const std::string text : {"", "o", "of", "onf", "on\n", "offf", "ON"}) {
        writeFile(path_, text);
        EXPECT_EQ(readFlag(path_).word, "") << text;
        EXPECT_TRUE(readFlag(path_).isReadable);
    }
}

TEST_F(HelperServiceFlagTest, SaysWhyItCannotReadTheFlag) {
    EXPECT_EQ(readFlag(path_).error, "No such file or directory");
    writeFile(folder_ / "elsewhere", "on");
    std::filesystem::create_symlink("elsewhere", path_);
    EXPECT_EQ(readFlag(path_).error, "Too many levels of symbolic links");
    std::filesystem::remove(path_);
    std::filesystem::create_directory(path_);
    EXPECT_EQ(readFlag(path_).error, "it is not a plain file");
    std::filesystem::remove(path_);
    ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
    EXPECT_EQ(readFlag(path_).error, "it is not a plain file");
}

TEST_F(HelperServiceFlagTest, FindsWhoMayWriteItBesidesTheService) {
    writeFile(path_, "off");
    allow("u::rw-,u:12345:rw-,g::r--,m::rw-,o::r--");
    ASSERT_TRUE(readFlag(path_).writer.has_value());
    EXPECT_EQ(readFlag(path_).writer->id, 12345U);
    allow("u::rw-,u:12344:r--,u:12345:rw-,g::rw-,m::rw-,o::r--");
    EXPECT_EQ(readFlag(path_).writer->id, 12345U);
    allow("u::rw-,u:12345:rw-,g::r--,m::r--,o::r--");  // the mask takes the right away
    EXPECT_FALSE(readFlag(path_).writer.has_value());
    allow("u::rw-,g::rw-,o::r--");
    EXPECT_FALSE(readFlag(path_).writer.has_value());
}

TEST_F(HelperServiceFlagTest, FindsNobodyInADamagedList) {
    const auto list = [](std::initializer_list<unsigned char> bytes) {
        return std::string(bytes.begin(), bytes.end());
    };
    EXPECT_EQ(writerIn(""), std::nullopt);
    EXPECT_EQ(writerIn(list({2, 0, 0})), std::nullopt);
    EXPECT_EQ(writerIn(list({3, 0, 0, 0, 2, 0, 6, 0, 1, 0, 0, 0})), std::nullopt);
    EXPECT_EQ(writerIn(list({2, 0, 0, 0, 2, 0, 6, 0, 1, 0, 0})), std::nullopt);
    EXPECT_EQ(writerIn(list({2, 0, 0, 0, 2, 0, 6, 0, 1, 2, 0, 0})), std::optional<uid_t>(513));
}

}  // namespace
}  // namespace kovra::control
