#include <grp.h>
#include <gtest/gtest.h>
#include <link.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "helper/Descriptor.h"
#include "tests/helper/AsRoot.h"
#include "tests/helper/PrivateMachine.h"
#include "tests/helper/ProcessName.h"
#include "tests/helper/pads/MockInputs.h"

// Tests of ble-kovra-helper as a process, in a chroot with its own /Library and /run. The other folders of the chroot
// are those of this machine. The input devices are simulated.

namespace kovra::helper {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

const std::string root = "/run/root";
const std::string flagFolder = root + "/Library/Application Support/ble-kovra";

bool waitUntil(const std::function<bool()>& done, std::chrono::milliseconds timeout = 20s) {
    const auto end = std::chrono::steady_clock::now() + timeout;
    while (!done()) {
        if (std::chrono::steady_clock::now() >= end) return false;
        std::this_thread::sleep_for(1ms);
    }
    return true;
}

// Returns the path of AddressSanitizer's library followed by a colon, or an empty string if this program runs without
// it. The library must be the first one in LD_PRELOAD.
std::string sanitizer() {
    std::string found;
    const auto look = [](dl_phdr_info* library, std::size_t, void* name) {
        if (std::strstr(library->dlpi_name, "/libasan.so") == nullptr) return 0;
        *static_cast<std::string*>(name) = std::string(library->dlpi_name) + ":";
        return 1;
    };
    ::dl_iterate_phdr(look, &found);
    return found;
}

// A child process. The destructor kills it if it is still running.
class Process {
  public:
    explicit Process(const std::function<void()>& work) : number_(::fork()) {
        if (number_ != 0) return;
        work();
        ::_exit(127);
    }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    ~Process() { end(SIGKILL); }

    bool isRunning() {
        if (number_ > 0 && ::waitpid(number_, &status_, WNOHANG) == number_) number_ = 0;
        return number_ > 0;
    }
    // Waits up to 20 s until the process ends. Returns its exit status, or -1 if a signal ended it or if it is still
    // running.
    int result() {
        if (!waitUntil([this] { return !isRunning(); })) return -1;
        return WIFEXITED(status_) ? WEXITSTATUS(status_) : -1;
    }
    bool keepsRunningFor(std::chrono::milliseconds time) {
        return !waitUntil([this] { return !isRunning(); }, time);
    }
    void signal(int number) {
        if (isRunning()) ::kill(number_, number);
    }
    int end(int number) {
        signal(number);
        return result();
    }

  private:
    pid_t number_;
    int status_ = -1;
};

class Machine {
  public:
    explicit Machine(uid_t user) : user_(user) {
        computer.addDevice(pad);
        fs::create_directory(root);
        mount("tmpfs", root, "tmpfs", 0);
        ::chmod(root.c_str(), 0755);
        for (const auto& entry : fs::directory_iterator("/")) {
            const std::string name = entry.path().filename().string();
            if (name == "run" || name == "Library") continue;
            if (entry.is_symlink()) {
                fs::copy_symlink(entry.path(), root + "/" + name);
            } else if (entry.is_directory()) {
                fs::create_directory(root + "/" + name);
                mount("/" + name, root + "/" + name, nullptr, MS_BIND | MS_REC);
            }
        }
        for (const char* name : {"seats", "sessions", "users", "machines"})
            fs::create_directories(root + "/run/systemd/" + name);
        for (std::string path = flagFolder; path != root; path = fs::path(path).parent_path().string()) {
            fs::create_directories(path);
            ::chmod(path.c_str(), 0755);
        }
        writeFile(root + "/run/systemd/sessions/c1",
                  "UID=" + std::to_string(user) +
                      "\nUSER=somebody\nACTIVE=1\nIS_DISPLAY=1\nSTATE=active\nREMOTE=0\nTYPE=wayland\nCLASS=user\n"
                      "SEAT=seat0\n");
        arrive();
    }

    static void seat(const std::string& text) {
        writeFile(root + "/run/systemd/seats/.new", text);
        fs::rename(root + "/run/systemd/seats/.new", root + "/run/systemd/seats/seat0");
    }
    void arrive() const {
        seat("IS_SEAT0=1\nCAN_GRAPHICAL=1\nACTIVE=c1\nACTIVE_UID=" + std::to_string(user_) + "\nSESSIONS=c1\n");
    }
    static void leave() { seat("IS_SEAT0=1\nCAN_GRAPHICAL=1\n"); }

    std::unique_ptr<Process> start(const std::string& argument = {}, const std::string& notifySocket = {},
                                   const std::string& second = {}) const {
        return std::make_unique<Process>([&] {
            ::setenv("LD_PRELOAD", (sanitizer() + KOVRA_UMOCKDEV_PRELOAD).c_str(), 1);
            if (!notifySocket.empty()) ::setenv("NOTIFY_SOCKET", notifySocket.c_str(), 1);
            if (isLogClosed) closeLog();
            if (::chroot(root.c_str()) != 0 || ::chdir("/") != 0) return;
            const char* given = argument.empty() ? nullptr : argument.c_str();
            const char* other = second.empty() ? nullptr : second.c_str();
            ::execl(KOVRA_HELPER, "ble-kovra-helper", given, other, nullptr);
        });
    }
    std::unique_ptr<Process> startApplication() const {
        return std::make_unique<Process>([this] {
            takeName("ble-kovra");
            if (::setresuid(user_, user_, user_) == 0)
                while (true) ::pause();
        });
    }
    // Starts the helper, and mutes the pad by writing "on" into the new flag.
    std::unique_ptr<Process> startMuted() {
        fs::remove(flagFolder + "/state");
        auto helper = start();
        if (!waitUntil([] { return fs::exists(flagFolder + "/state"); })) ADD_FAILURE() << "no flag";
        fs::resize_file(flagFolder + "/state", 0);
        std::ofstream(flagFolder + "/state", std::ios::in) << "on";
        EXPECT_TRUE(becomes("1"));
        return helper;
    }
    bool becomes(const std::string& value) const {
        return waitUntil([&] { return is(value); });
    }
    bool is(const std::string& value) const { return computer.inhibited("input5") == value; }

    MockInputs computer;
    bool isLogClosed = false;  // whether the helper logs to a pipe without a reader

  private:
    static void closeLog() {
        ::signal(SIGPIPE, SIG_DFL);  // umockdev ignores SIGPIPE
        int ends[2];
        if (::pipe(ends) != 0 || ::dup2(ends[1], STDERR_FILENO) < 0) ::_exit(1);
        for (const int end : ends) ::close(end);
    }
    static void mount(const std::string& what, const std::string& where, const char* type, unsigned long how) {
        if (::mount(what.c_str(), where.c_str(), type, how, nullptr) != 0)
            throw std::runtime_error("cannot mount " + where);
    }

    const uid_t user_;
};

// A service manager's notification socket. The tests pass its path to the helper as NOTIFY_SOCKET.
class ServiceManager {
  public:
    ServiceManager() : socket_(::socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) {
        sockaddr_un address{.sun_family = AF_UNIX, .sun_path = "/run/root/run/notify"};
        if (::bind(socket_.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
            throw std::runtime_error("no socket");
    }
    bool receives(const std::string& text) const {
        return waitUntil([&] {
            std::string message(200, ' ');
            const ssize_t length = ::recv(socket_.number(), message.data(), message.size(), 0);
            return length > 0 && message.substr(0, static_cast<std::size_t>(length)) == text;
        });
    }

  private:
    Descriptor socket_;
};

TEST(ProgramTest, UnmutesThePadOnEachTerminationSignal) {
    inPrivateMachine([](uid_t user) {
        Machine machine(user);
        const auto application = machine.startApplication();
        for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGQUIT, SIGUSR1, SIGUSR2, SIGALRM}) {
            const auto helper = machine.startMuted();
            EXPECT_EQ(helper->end(signal), 0) << signal;
            EXPECT_TRUE(machine.is("0")) << signal;
        }
    });
}

TEST(ProgramTest, UnmutesByReleaseWhatAKilledProcessHasLeft) {
    inPrivateMachine([](uid_t user) {
        Machine machine(user);
        const auto application = machine.startApplication();
        machine.startMuted()->end(SIGKILL);
        EXPECT_TRUE(machine.is("1"));
        EXPECT_EQ(machine.start("--release")->result(), 0);
        EXPECT_TRUE(machine.is("0"));
        EXPECT_EQ(machine.start("--release")->result(), 0);
    });
}

TEST(ProgramTest, RetriesAtItsEndToUnmuteAPadWhoseDriverRefuses) {
    inPrivateMachine([](uid_t user) {
        Machine machine(user);
        const auto application = machine.startApplication();
        const auto helper = machine.startMuted();
        machine.computer.refuseWrites("input5");
        helper->signal(SIGTERM);
        EXPECT_TRUE(helper->keepsRunningFor(500ms));
        machine.computer.acceptWrites("input5", "1");
        EXPECT_EQ(helper->result(), 0);
        EXPECT_TRUE(machine.is("0"));
    });
}

TEST(ProgramTest, FailsIfThePadCannotBeUnmuted) {
    inPrivateMachine([](uid_t user) {
        Machine machine(user);
        const auto application = machine.startApplication();
        machine.startMuted()->end(SIGKILL);
        machine.computer.refuseWrites("input5");
        EXPECT_EQ(machine.start("--release")->result(), 1);
    });
}

TEST(ProgramTest, HasNothingToReleaseWithoutAListOfMutedPadsAndFailsIfItCannotBeRead) {
    inPrivateMachine([](uid_t user) {
        const Machine machine(user);
        EXPECT_EQ(machine.start("--release")->result(), 0);
        const fs::path folder = root + "/run/ble-kovra-helper";
        EXPECT_FALSE(fs::exists(folder));
        fs::create_directory(folder);
        fs::create_directory_symlink("/", folder / "pads");
        const ServiceManager manager;
        EXPECT_EQ(machine.start("--release", "/run/notify")->result(), 1);
    });
}

TEST(ProgramTest, UnmutesThePadEvenIfItsLogIsClosed) {
    inPrivateMachine([](uid_t user) {
        Machine machine(user);
        machine.isLogClosed = true;
        const auto application = machine.startApplication();
        const auto helper = machine.startMuted();
        fs::rename(flagFolder, flagFolder + ".away");
        EXPECT_EQ(helper->result(), 1);
        EXPECT_TRUE(machine.is("0"));
    });
}

TEST(ProgramTest, LeavesThePadAloneThatAnotherInstanceHasMuted) {
    inPrivateMachine([](uid_t user) {
        Machine machine(user);
        const auto application = machine.startApplication();
        const auto helper = machine.startMuted();
        EXPECT_EQ(machine.start()->result(), 1);
        EXPECT_EQ(machine.start("--release")->result(), 1);
        EXPECT_TRUE(machine.is("1"));
        EXPECT_EQ(helper->end(SIGTERM), 0);
    });
}

TEST(ProgramTest, FollowsTheUserAtTheMachineAndTheApplication) {
    inPrivateMachine([](uid_t user) {
        Machine machine(user);
        auto application = machine.startApplication();
        const auto helper = machine.startMuted();
        Machine::leave();
        EXPECT_TRUE(machine.becomes("0"));
        machine.arrive();
        EXPECT_TRUE(machine.becomes("1"));
        application.reset();
        EXPECT_TRUE(machine.becomes("0"));
        EXPECT_TRUE(helper->isRunning());
    });
}

TEST(ProgramTest, NotifiesTheServiceManagerAndFailsWithoutTheFlagsFolder) {
    inPrivateMachine([](uid_t user) {
        const Machine machine(user);
        const ServiceManager manager;
        const auto helper = machine.start({}, "/run/notify");
        EXPECT_TRUE(manager.receives("READY=1"));
        fs::rename(flagFolder, flagFolder + ".away");
        EXPECT_EQ(helper->result(), 1);
    });
}

TEST(ProgramTest, DelaysItsRestartIfItCannotStart) {
    inPrivateMachine([](uid_t user) {
        const Machine machine(user);
        const ServiceManager manager;
        fs::rename(root + "/Library", root + "/elsewhere");
        fs::create_directory_symlink("elsewhere", root + "/Library");
        EXPECT_EQ(machine.start()->result(), 1);
        const auto helper = machine.start({}, "/run/notify");
        EXPECT_TRUE(manager.receives("STATUS=Cannot start; trying again"));
        EXPECT_TRUE(helper->keepsRunningFor(500ms));
        EXPECT_EQ(helper->end(SIGTERM), 1);
        fs::remove(root + "/Library");
        fs::rename(root + "/elsewhere", root + "/Library");
        const auto first = machine.start({}, "/run/notify");
        EXPECT_TRUE(manager.receives("READY=1"));
        const auto second = machine.start({}, "/run/notify");
        EXPECT_TRUE(manager.receives("STATUS=Cannot start; trying again"));
        EXPECT_TRUE(second->keepsRunningFor(500ms));
        EXPECT_EQ(second->end(SIGTERM), 1);
    });
}

TEST(ProgramTest, GivesThePadToTheNamedGroup) {
    runAsRoot([] {
        inPrivateMachine([](uid_t user) {
            const Machine machine(user);
            EXPECT_EQ(machine.start("--grant", {}, "root")->result(), 0);
            EXPECT_EQ(machine.computer.rights("input5").st_gid, 0U);
            EXPECT_EQ(machine.start("--grant", {}, "daemon")->result(), 0);
            EXPECT_EQ(machine.computer.rights("input5").st_gid, ::getgrnam("daemon")->gr_gid);
        });
    });
}

TEST(ProgramTest, FailsToGiveThePadToAGroupThatDoesNotExist) {
    inPrivateMachine([](uid_t user) {
        const Machine machine(user);
        EXPECT_EQ(machine.start("--grant", {}, "nobody-has-this-name")->result(), 1);
    });
}

TEST(ProgramTest, RefusesAnUnknownOption) {
    inPrivateMachine([](uid_t user) {
        const Machine machine(user);
        EXPECT_EQ(machine.start("--mute")->result(), 2);
        EXPECT_EQ(machine.start("--grant")->result(), 2);
        EXPECT_EQ(machine.start("--release", {}, "root")->result(), 2);
    });
}

}  // namespace
}  // namespace kovra::helper
