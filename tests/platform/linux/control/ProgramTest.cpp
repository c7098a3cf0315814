// Tests of ble-kovractl with the real application on a session bus of its own.

#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>

#include "tests/support/Environment.h"
#include "tests/support/linux/PrivateBus.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;

struct Ended {
    std::string output;
    int exitCode;
};

// Runs ble-kovractl. Returns what it has printed to standard output.
Ended control(const std::string& arguments) {
    const TempFolder folder;
    const int status = std::system(("{ '" KOVRA_CONTROL "' " + arguments + "; } >" + (folder / "out")).c_str());
    return {readFile(folder / "out"), WIFEXITED(status) ? WEXITSTATUS(status) : -1};
}

// Returns what the application has told.
nlohmann::json told() { return nlohmann::json::parse(control("status --json").output)["application"]; }

class ProgramTest : public testing::Test {
  protected:
    ProgramTest() {
        environment_.unset({"DISPLAY", "WAYLAND_DISPLAY", "XDG_SESSION_TYPE", "XDG_RUNTIME_DIR", "XDG_ACTIVATION_TOKEN",
                            "DESKTOP_STARTUP_ID"});
        environment_.set("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus");
        environment_.set("HOME", home_.path().string());
        environment_.set("XDG_CONFIG_HOME", home_ / "config");
    }
    ~ProgramTest() override { kill(); }

    void start() {
        std::array<char*, 2> arguments{const_cast<char*>(KOVRA_PROGRAM), nullptr};
        ASSERT_EQ(::posix_spawn(&pid_, arguments[0], nullptr, nullptr, arguments.data(), environ), 0);
        ASSERT_TRUE(becomes([] { return told()["contact"] == "answered"; }));
    }
    void kill() {
        if (pid_ <= 0) return;
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
        pid_ = 0;
    }
    template <typename Condition>
    static bool becomes(Condition holds) {
        const auto end = std::chrono::steady_clock::now() + 60s;
        while (!holds() && std::chrono::steady_clock::now() < end) std::this_thread::sleep_for(10ms);
        return holds();
    }

    const TempFolder home_;
    Environment environment_;
    PrivateBus daemon_{"DBUS_SESSION_BUS_ADDRESS"};
    pid_t pid_ = 0;
};

TEST_F(ProgramTest, TellsWhatTheApplicationKnows) {
    std::filesystem::create_directories(home_ / "config/ble-kovra");
    writeFile(home_ / "config/ble-kovra/preferences.json",
              R"({"selectedDeviceIDs": ["Wireless Mouse#4660:22136"], "isEnabled": true, "blockMode": "always"})");
    start();
    const nlohmann::json application = told();
    EXPECT_EQ(application["version"], KOVRA_VERSION);
    EXPECT_EQ(application["enabled"], true);
    EXPECT_EQ(application["mode"], "always");
    EXPECT_EQ(application["muting"], true);
    EXPECT_EQ(application["chosen"], nlohmann::json::parse(R"([{"name": "Wireless Mouse", "presence": "away"}])"));
    EXPECT_EQ(application["tray"], "none");
    EXPECT_EQ(application["sessionBusFailures"], nlohmann::json::array());
    EXPECT_EQ(application["systemBusFailures"].size(), 1U);
    bool isListed = false;
    for (const auto& process : application["processes"]) isListed = isListed || process["pid"] == pid_;
    EXPECT_TRUE(isListed);
    const std::string text = control("status").output;
    for (const char* line : {"\nSwitch: on.\n", "\nMode: always.\n", "\nChosen: Wireless Mouse is not connected.\n",
                             "\nDecision: mute.\n", "\nTray: none shows the icon.\n"}) {
        EXPECT_NE(text.find(line), std::string::npos) << line << " is missing in " << text;
    }
    EXPECT_NE(control("doctor").output.find("ok     Application: version " KOVRA_VERSION " runs"), std::string::npos);
}

TEST_F(ProgramTest, SwitchesMutingAndEndsTheApplication) {
    start();
    const auto isEnabled = [](bool wanted) { return [wanted] { return told()["enabled"] == wanted; }; };
    EXPECT_EQ(control("toggle").exitCode, 0);
    EXPECT_TRUE(becomes(isEnabled(false)));
    EXPECT_EQ(control("toggle").exitCode, 0);
    EXPECT_TRUE(becomes(isEnabled(true)));
    EXPECT_EQ(control("off 2>&1").output, "");
    EXPECT_TRUE(becomes(isEnabled(false)));
    EXPECT_EQ(control("on").exitCode, 0);
    EXPECT_TRUE(becomes(isEnabled(true)));
    EXPECT_EQ(control("settings").exitCode, 0);
    EXPECT_EQ(control("hotkey").exitCode, 0);
    EXPECT_EQ(control("quit").exitCode, 0);
    int status = 0;
    EXPECT_EQ(::waitpid(pid_, &status, 0), pid_);
    pid_ = 0;
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_EQ(told()["contact"], "absent");
}

TEST_F(ProgramTest, SaysInOneLineThatNothingRuns) {
    for (const char* action : {"toggle", "on", "off", "settings", "hotkey", "quit"}) {
        const Ended ended = control(std::string(action) + " 2>&1");
        EXPECT_EQ(ended.exitCode, 1);
        EXPECT_EQ(ended.output, "ble-kovractl: BLE-kovra is not running in this session\n");
    }
}

TEST_F(ProgramTest, WaitsForNoApplicationThatHangs) {
    start();
    ASSERT_EQ(::kill(pid_, SIGSTOP), 0);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(told()["contact"], "silent");
    EXPECT_EQ(control("quit 2>&1").output, "ble-kovractl: BLE-kovra does not answer\n");
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 20s);
}

TEST_F(ProgramTest, AnswersWithItsExitCodeToo) {
    // What the answer is depends on the machine. tests/system has a laptop with trackpads.
    const std::map<std::string, int> exitCodes{{"works", 0}, {"muted", 1}, {"unknown", 2}};
    const Ended json = control("status --json");
    const nlohmann::json status = nlohmann::json::parse(json.output);
    EXPECT_EQ(json.exitCode, exitCodes.at(status["answer"]));
    const Ended text = control("status");
    EXPECT_EQ(text.exitCode, json.exitCode);
    EXPECT_TRUE(text.output.starts_with(std::string(status["sentence"]) + "\n")) << text.output;
}

TEST_F(ProgramTest, EndsWithTwoIfItCannotPrint) {
    for (const char* command : {"status", "status --json", "doctor", "--version", "--help"})
        EXPECT_EQ(control(std::string(command) + " >/dev/full").exitCode, 2) << command;
}

}  // namespace
}  // namespace kovra
