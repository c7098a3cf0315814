// Tests of the resident program's arguments, of what other programs ask of it, and of the signals that end it.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <clocale>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "BLE_kovra/platform/linux/bus/BusConnection.h"
#include "tests/support/Environment.h"
#include "tests/support/linux/PrivateBus.h"
#include "tests/support/linux/RootListener.h"
#include "tests/support/linux/VirtualScreen.h"
#include "tests/support/posix/TempFolder.h"

namespace kovra {
namespace {

using namespace std::chrono_literals;

// The program on a session bus of its own, without a display, a system bus or any settings.
class ProgramTest : public testing::Test {
  protected:
    ProgramTest() {
        environment_.unset({"DISPLAY", "WAYLAND_DISPLAY", "XDG_SESSION_TYPE", "XDG_RUNTIME_DIR"});
        environment_.set("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus");
        environment_.set("HOME", home_.path().string());
        environment_.set("XDG_CONFIG_HOME", home_ / "config");
        sd_bus* bus = nullptr;
        EXPECT_GE(sd_bus_open_user(&bus), 0);
        bus_.reset(bus);
    }
    ~ProgramTest() override {
        if (pid_ > 0) ::kill(pid_, SIGKILL);
        if (pid_ > 0) ::waitpid(pid_, nullptr, 0);
        if (HasFailure()) std::fputs(logged().c_str(), stderr);
    }

    // Starts the program with this disposition of SIGHUP, and waits until it replies on the bus.
    void start(sighandler_t onHangUp) {
        posix_spawnattr_t attributes;
        ::posix_spawnattr_init(&attributes);
        sigset_t none;
        sigemptyset(&none);
        ::posix_spawnattr_setsigmask(&attributes, &none);
        ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
        posix_spawn_file_actions_t files;
        ::posix_spawn_file_actions_init(&files);
        ::posix_spawn_file_actions_addopen(&files, STDERR_FILENO, (home_ / "log").c_str(),
                                           O_WRONLY | O_CREAT | O_APPEND, 0600);
        std::array<char*, 2> arguments{const_cast<char*>(KOVRA_PROGRAM), nullptr};
        const auto before = std::signal(SIGHUP, onHangUp);  // the program inherits this disposition
        const int result = ::posix_spawn(&pid_, arguments[0], &files, &attributes, arguments.data(), environ);
        std::signal(SIGHUP, before);
        ::posix_spawn_file_actions_destroy(&files);
        ::posix_spawnattr_destroy(&attributes);
        ASSERT_EQ(result, 0);
        const auto end = std::chrono::steady_clock::now() + 60s;
        while (!answers() && std::chrono::steady_clock::now() < end) std::this_thread::sleep_for(10ms);
        ASSERT_TRUE(answers());
    }
    bool answers() {
        return sd_bus_call_method(bus_.get(), "org.ble_kovra.BLEKovra", "/", "org.freedesktop.DBus.Peer", "Ping",
                                  nullptr, nullptr, "") >= 0;
    }
    // Asks the running program for an action. Returns whether it has accepted that.
    bool perform(const char* action) {
        return sd_bus_call_method(bus_.get(), "org.ble_kovra.BLEKovra", "/org/ble_kovra/BLEKovra",
                                  "org.freedesktop.Application", "ActivateAction", nullptr, nullptr, "sava{sv}", action,
                                  0, 0) >= 0;
    }
    // Passes the program the token of a click on its icon or menu, as a panel does. Returns whether it has accepted
    // that.
    bool click(const char* token) {
        return sd_bus_call_method(bus_.get(), "org.ble_kovra.BLEKovra", "/StatusNotifierItem",
                                  "org.kde.StatusNotifierItem", "ProvideXdgActivationToken", nullptr, nullptr, "s",
                                  token) >= 0;
    }
    // Stops the program, asks it for an action, sends it the signal, and lets it continue and end. Returns whether it
    // has accepted the action: it may also receive the signal first.
    bool performsBefore(int signal, const char* action) {
        send(SIGSTOP);
        std::optional<bool> isAccepted;
        sd_bus_slot* slot = nullptr;
        EXPECT_GE(sd_bus_call_method_async(bus_.get(), &slot, "org.ble_kovra.BLEKovra", "/org/ble_kovra/BLEKovra",
                                           "org.freedesktop.Application", "ActivateAction", replied, &isAccepted,
                                           "sava{sv}", action, 0, 0),
                  0);
        const BusSlot held(slot);
        // The bus has passed the call on when it replies to the next one.
        EXPECT_GE(sd_bus_call_method(bus_.get(), "org.freedesktop.DBus", "/", "org.freedesktop.DBus.Peer", "Ping",
                                     nullptr, nullptr, ""),
                  0);
        send(signal);
        send(SIGCONT);
        EXPECT_EQ(exitCode(), 0);
        while (!isAccepted) {
            if (sd_bus_process(bus_.get(), nullptr) == 0) sd_bus_wait(bus_.get(), UINT64_MAX);
        }
        return *isAccepted;
    }
    // Waits until the program has saved this value of the switch. Returns whether it has.
    bool savesSwitch(const std::string& value) {
        const auto isSaved = [&] {
            const std::string text = readFile(home_ / "config/ble-kovra/preferences.json");
            return text.find("\"isEnabled\": " + value) != std::string::npos;
        };
        const auto end = std::chrono::steady_clock::now() + 20s;
        while (!isSaved() && std::chrono::steady_clock::now() < end) std::this_thread::sleep_for(10ms);
        return isSaved();
    }
    // Returns what the program has written to its standard error.
    std::string logged() const { return readFile(home_ / "log"); }
    void send(int signal) { ASSERT_EQ(::kill(pid_, signal), 0); }
    // Waits for the end of the program. Returns its exit code, or -1 if a signal has killed it.
    int exitCode() {
        int status = 0;
        EXPECT_EQ(::waitpid(pid_, &status, 0), pid_);
        pid_ = 0;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    const TempFolder home_;
    Environment environment_;

  private:
    static int replied(sd_bus_message* reply, void* context, sd_bus_error*) {
        *static_cast<std::optional<bool>*>(context) = sd_bus_message_is_method_error(reply, nullptr) == 0;
        return 0;
    }

    PrivateBus daemon_{"DBUS_SESSION_BUS_ADDRESS"};
    BusHandle bus_;
    pid_t pid_ = 0;
};

// What a run of the program has printed, and its exit code.
struct Ended {
    std::string output;
    int exitCode;
};

Ended run(const std::string& arguments) {
    const TempFolder folder;
    const int status = std::system(("{ '" KOVRA_PROGRAM "' " + arguments + "; } >" + (folder / "out")).c_str());
    return {readFile(folder / "out"), WIFEXITED(status) ? WEXITSTATUS(status) : -1};
}

TEST_F(ProgramTest, PrintsItsVersionAndItsHelpAndDoesNothingElse) {
    const Ended version = run("--version 2>&1");
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_EQ(version.output, "ble-kovra " KOVRA_VERSION "\n");
    const Ended help = run("--help 2>&1");
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_TRUE(help.output.starts_with("usage: ble-kovra ")) << help.output;
    EXPECT_EQ(run("--version >/dev/full").exitCode, 1);
    EXPECT_FALSE(answers());
}

TEST_F(ProgramTest, EndsWithOneLineOnStandardErrorForAnyOtherArgument) {
    for (const char* argument : {"--quit", "-v", "''", "settings", "--version --version"}) {
        EXPECT_EQ(run(std::string(argument) + " 2>/dev/null").output, "") << argument;
        const Ended both = run(std::string(argument) + " 2>&1");
        EXPECT_EQ(both.exitCode, 2) << argument;
        EXPECT_EQ(both.output.find('\n'), both.output.size() - 1) << both.output;
    }
    EXPECT_FALSE(answers());
}

TEST_F(ProgramTest, DoesWhatAnotherProgramOfItsSessionAsksFor) {
    start(SIG_DFL);
    EXPECT_TRUE(perform("toggle"));
    EXPECT_TRUE(savesSwitch("false"));
    EXPECT_TRUE(perform("on"));
    EXPECT_TRUE(savesSwitch("true"));
    EXPECT_TRUE(perform("off"));
    EXPECT_TRUE(savesSwitch("false"));
    EXPECT_FALSE(perform("mute"));
    EXPECT_TRUE(perform("settings"));
    EXPECT_TRUE(answers());
    EXPECT_TRUE(perform("quit"));
    EXPECT_EQ(exitCode(), 0);
}

TEST_F(ProgramTest, EndsTheLaunchFeedbackOfTheClickThatEndsIt) {
    const VirtualScreen screen;
    RootListener desktop;
    start(SIG_DFL);
    EXPECT_TRUE(click("click_TIME1"));
    EXPECT_TRUE(perform("quit"));
    EXPECT_EQ(exitCode(), 0);
    const auto end = std::chrono::steady_clock::now() + 20s;
    while (desktop.messages().empty() && std::chrono::steady_clock::now() < end) std::this_thread::sleep_for(10ms);
    EXPECT_EQ(desktop.messages(), std::vector<std::string>{"remove: ID=click_TIME1"});
}

// Returns the system's message for this error in Russian. The Debian package "libc-l10n" contains it.
std::string inRussian(int error) {
    EXPECT_NE(std::setlocale(LC_MESSAGES, "ru_RU.UTF-8"), nullptr);
    EXPECT_NE(std::setlocale(LC_CTYPE, "ru_RU.UTF-8"), nullptr);
    std::string message = std::strerror(error);
    std::setlocale(LC_ALL, "C");
    return message;
}

TEST_F(ProgramTest, LogsTheReasonsOfTheSystemInTheUsersLanguage) {
    environment_.unset({"LANGUAGE", "LC_ALL", "LC_CTYPE", "LC_MESSAGES", "JOURNAL_STREAM"});
    environment_.set("LOCPATH", KOVRA_TEST_LOCALES);
    const std::string path = home_ / "config/ble-kovra/preferences.json";
    std::filesystem::create_directories(path);
    const std::string reason = inRussian(EISDIR);
    ASSERT_NE(reason, std::strerror(EISDIR)) << "the system has no Russian messages";
    for (const char* locale : {"ru_RU.UTF-8", "ru_RU.KOI8-R"}) {
        environment_.set("LANG", locale);
        start(SIG_DFL);
        send(SIGTERM);
        static_cast<void>(exitCode());  // newlocale() leaks parts of LOCPATH, which only tests set
        const std::string line = "ble-kovra: не удалось прочитать настройки (" + path + "): " + reason + "\n";
        EXPECT_TRUE(logged().find(line) != std::string::npos) << locale << ", in place of " << line;
        std::filesystem::remove(home_ / "log");
    }
}

// The two arrive while the program is stopped. It handles them in successive turns of its loop.
TEST_F(ProgramTest, SavesAChoiceThatASignalToEndFollowsAtOnce) {
    bool isAccepted = false;
    for (int round = 0; round < 10 && !isAccepted; ++round) {
        start(SIG_DFL);
        EXPECT_TRUE(perform("on"));
        EXPECT_TRUE(savesSwitch("true"));
        isAccepted = performsBefore(SIGTERM, "off");
    }
    ASSERT_TRUE(isAccepted) << "the signal came first each time";
    EXPECT_TRUE(savesSwitch("false"));
}

TEST_F(ProgramTest, EndsOnAHangUp) {
    start(SIG_DFL);
    send(SIGHUP);
    EXPECT_EQ(exitCode(), 0);
}

TEST_F(ProgramTest, OutlivesAHangUpIfItWasStartedWithNohup) {
    start(SIG_IGN);
    send(SIGHUP);
    // Each reply needs a turn of the program's loop. If SIGHUP ended the program, its loop would end within the first
    // two turns.
    for (int call = 1; call <= 5; ++call) EXPECT_TRUE(answers()) << "call " << call;
    send(SIGTERM);
    EXPECT_EQ(exitCode(), 0);
}

}  // namespace
}  // namespace kovra
