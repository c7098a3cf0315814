#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/posix/TempFolder.h"

namespace kovra::helper::model {

using Time = std::chrono::nanoseconds;  // since the machine's boot
inline constexpr Time forever = Time::max();

// Thrown through the helper's code once its process was killed, and when the life is over.
struct Killed {};
struct LifeIsOver {};

// An input device, as the kernel and udev describe it.
struct Device {
    std::string input;  // "input5"
    std::string name;
    std::map<std::string, std::string> properties;  // of its event node, in udev's database
    std::string stick = "0";                        // the attribute `properties`
    std::string keys = "30000 0 0 0 0";
    std::string bus;
    std::string vendor;
    std::string hid;
    bool isVirtual = false;

    bool isInhibited = false;
    bool isInhibitedByHelper = false;
    bool isGranted = false;       // whether the helper's group may write the attribute
    bool refusesToWork = false;   // its driver refuses to unmute it
    bool refusesToPause = false;  // its driver refuses to mute it
    bool couldNotWork = false;    // the helper has failed to unmute it
};

// A process of another account.
struct Person {
    uid_t user;
    std::string name;
    Time start;
};

// A process of the helper: the daemon, --release or --grant.
struct Process {
    std::string option;
    bool isServices = false;  // started by the service manager
    bool isDead = false;
    bool isStopped = false;
    bool isServing = false;  // its loop has waited for events at least once
    bool hasSignal = false;  // a termination signal is pending
    std::vector<std::string> log;
};

// What a descriptor of the helper refers to. The files are real ones; all else is the machine's.
struct OpenFile {
    enum class Kind { file, attribute, process, udev, login, terminal, clock, group, socket };

    Kind kind = Kind::file;
    std::string path;       // of a file, or the name of the input device
    pid_t process = 0;      // of a pidfd
    std::set<int> members;  // of an epoll descriptor
};

// A source of events of the helper's loop (see LoopCalls.cpp).
struct Source;

// A simulated machine on which the helper's program runs, from its main() on: clock, processes, sessions, input
// devices, faults. The linker replaces the system calls and the library calls of the helper by those in the files
// *Calls.cpp, which ask this machine (see CMakeLists.txt). Files, access lists, locks and inotify are the kernel's own,
// below a temporary folder.
//
// The helper's process runs until it would wait. Whatever waits calls `step`, which moves the clock, performs the next
// action, or throws LifeIsOver.
class Machine {
  public:
    Machine();
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;
    ~Machine();

    static Machine* current;  // the one machine that exists
    static bool isInside;     // whether the helper's code runs

    // Moves the clock, but not beyond this time, or performs an action.
    std::function<void(Time latest)> step;

    // --- Time
    // Not a whole second, as the times of writes on an old file system are.
    Time now = std::chrono::hours(1) + std::chrono::nanoseconds(123'456'789);
    Time realTimeAtBoot = std::chrono::hours(24 * 365 * 50);
    bool clockHasJumped = false;

    // --- Input devices
    std::map<std::string, Device> devices;  // by the kernel's name
    bool hasDeviceEvent = false;
    std::vector<std::string> wrongs;  // what the helper must never do to a device

    // --- People
    struct Session {
        uid_t user;
        std::string type = "user";
        std::string state = "active";
        bool isRemote = false;
        unsigned terminal = 0;
    };
    std::optional<Session> session;
    unsigned shownTerminal = 0;
    bool loginIsBroken = false;
    bool hasSessionEvent = false;
    bool hasTerminalEvent = false;
    std::map<pid_t, Person> people;
    void startPerson(pid_t process, const Person& person);
    void describePerson(pid_t process) const;
    void endPerson(pid_t process);

    // --- Faults
    bool diskIsFull = false;
    bool diskIsReadOnly = false;
    bool hasNoWatches = false;
    bool hasNoDescriptors = false;
    bool runIsFull = false;
    bool queueIsFull = false;
    int killAtCall = 0;   // before which of the next calls with an effect the calling process is killed; 0 for none
    int kills = 0;        // how many have been carried out
    int callsBefore = 0;  // after how many further calls with an effect this happens; 0 for never
    std::function<void()> interruption;  // in the middle of the helper's work

    // --- The flag
    std::string folder() const { return root() + "/Library/Application Support/ble-kovra"; }
    std::string flag() const { return folder() + "/state"; }
    std::string root() const { return root_.path().string(); }
    std::set<std::string> records() const;
    void noteWrite(const std::string& path);  // sets the time of the last write to the present
    std::map<ino_t, Time> writes;             // by the real-time clock

    // --- The helper's processes
    // Runs the helper with this option to its end. Returns its exit code, or -9 if it was killed.
    int run(const std::string& option, bool isServices);
    Process& process() { return *processes_.back(); }
    Process* daemon() const { return daemon_; }
    bool isBusy() const { return !processes_.empty(); }  // whether any process of the helper runs
    int lives = 0;                                       // how many daemons have been started
    // Waits until `ready` holds, or until this time. Returns whether it holds.
    bool waitUntil(Time deadline, const std::function<bool()>& ready);
    // The service manager's watchdog over the daemon.
    Time watchdogTime{0};  // 0 turns it off
    Time lastSignOfLife{0};
    bool isReady = false;
    Time stopDeadline = forever;  // when the service manager kills a daemon that does not end
    int notify(std::string_view state);

    // --- For the system calls
    // Returns true if the process is dead. A call with an effect counts first.
    bool isDead() { return process().isDead; }
    bool diesHere();
    // Notes a promise that is broken if a pad is muted now that the helper could have unmuted.
    void expectAlive(const std::string& what);
    std::string mapped(const std::string& path) const;
    // The error of a call that changes this file, or 0. `grows` if it needs room on the disk.
    int fault(const std::string& path, bool grows) const;
    int newDescriptor(OpenFile file);
    std::map<int, OpenFile> files;
    std::string pathOf(int descriptor) const;
    bool isReadable(int descriptor) const;
    std::list<Source*> sources;

  private:
    Time nextOfService() const;

    TempFolder root_{TempFolder::Where::memory};
    std::vector<Process*> processes_;
    Process* daemon_ = nullptr;
};

// The border between the helper's code and the machine, for the length of a system call.
class Entry {
  public:
    Entry() : isFromHelper_(Machine::isInside) { Machine::isInside = false; }
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;
    ~Entry() { Machine::isInside = isFromHelper_; }

    bool isFromHelper() const { return isFromHelper_; }
    Machine* operator->() const { return Machine::current; }

  private:
    const bool isFromHelper_;
};

}  // namespace kovra::helper::model
