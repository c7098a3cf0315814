#include "tests/helper/model/Machine.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <stdexcept>
#include <utility>

#include "helper/Log.h"

int helperMain(int count, char** arguments);  // main() of helper/main.cpp

namespace kovra::helper::model {

namespace fs = std::filesystem;

Machine* Machine::current = nullptr;
bool Machine::isInside = false;

namespace {

// The helper's filter of repeated lines belongs to a process. All processes of a machine share it here, so each daemon
// begins with as many new lines as the filter remembers.
void forgetLoggedLines() {
    static int count = 0;
    for (int line = 0; line < 17; ++line) log(Severity::info, "line " + std::to_string(++count));
}

}  // namespace

Machine::Machine() {
    if (::chmod(root().c_str(), 0755) != 0) throw std::runtime_error("no root");
    for (const char* folder : {"/proc/self", "/run/ble-kovra-helper", "/Library/Application Support/ble-kovra"})
        fs::create_directories(root() + folder);
    writeFile(root() + "/proc/self/uid_map", "0 0 4294967295\n");
    current = this;
}

Machine::~Machine() { current = nullptr; }

void Machine::startPerson(pid_t process, const Person& person) {
    people.insert_or_assign(process, person);
    fs::create_directory(root() + "/proc/" + std::to_string(process));
    describePerson(process);
}

void Machine::describePerson(pid_t process) const {
    const Person& person = people.at(process);
    const std::string folder = root() + "/proc/" + std::to_string(process) + "/";
    const std::string user = std::to_string(person.user);
    writeFile(folder + "status", "Name:\t" + person.name + "\nPPid:\t1\nUid:\t" + user + "\t" + user + "\t" + user +
                                     "\t" + user + "\nNSpid:\t" + std::to_string(process) + "\n");
    std::string fields = std::to_string(process) + " (" + person.name + ") S 1";
    for (int field = 5; field < 22; ++field) fields += " 0";
    const auto ticks = person.start / std::chrono::nanoseconds(std::chrono::seconds(1)) * ::sysconf(_SC_CLK_TCK) +
                       person.start % std::chrono::seconds(1) * ::sysconf(_SC_CLK_TCK) / std::chrono::seconds(1);
    writeFile(folder + "stat", fields + " " + std::to_string(ticks) + " 0\n");
    writeFile(folder + "cmdline", "/usr/bin/" + person.name + std::string(1, '\0'));
    writeFile(folder + "uid_map", "0 0 4294967295\n");
}

void Machine::endPerson(pid_t process) {
    people.erase(process);
    fs::remove_all(root() + "/proc/" + std::to_string(process));
}

std::set<std::string> Machine::records() const {
    std::set<std::string> names;
    std::error_code missing;
    for (const auto& entry : fs::directory_iterator(root() + "/run/ble-kovra-helper/pads", missing))
        names.insert(entry.path().filename());
    return names;
}

void Machine::noteWrite(const std::string& path) {
    struct stat status{};
    if (::stat(path.c_str(), &status) == 0) writes[status.st_ino] = realTimeAtBoot + now;
}

int Machine::run(const std::string& option, bool isServices) {
    Process process{.option = option, .isServices = isServices, .log = {}};
    const bool isDaemon = option.empty() && isServices;
    processes_.push_back(&process);
    if (isDaemon) {
        isInside = true;
        forgetLoggedLines();
        isInside = false;
        process.log.clear();
        ++lives;
        daemon_ = &process;
        isReady = false;
        watchdogTime = Time(0);
        stopDeadline = forever;
    }
    const auto end = [&] {
        isInside = false;
        if (isDaemon) daemon_ = nullptr;
        processes_.pop_back();
    };
    std::vector<std::string> words{"ble-kovra-helper"};
    if (!option.empty()) words.push_back(option);
    if (option == "--grant") words.emplace_back("_ble-kovra-helper");
    std::array<char*, 4> arguments{};
    std::ranges::transform(words, arguments.begin(), [](std::string& word) { return word.data(); });
    int code = -9;
    try {
        isInside = true;
        code = helperMain(static_cast<int>(words.size()), arguments.data());
    } catch (const Killed&) {
        code = -9;
    } catch (...) {
        end();
        throw;
    }
    end();
    if (process.isDead) code = -9;
    if (process.isDead && daemon_ != nullptr) daemon_->log.emplace_back();  // it may have changed the filter of lines
    if (processes_.empty() && !files.empty())
        wrongs.push_back("the helper has left a descriptor open: " + files.begin()->second.path);
    return code;
}

Time Machine::nextOfService() const {
    if (daemon_ == nullptr) return forever;
    return watchdogTime.count() == 0 ? stopDeadline : std::min(stopDeadline, lastSignOfLife + watchdogTime);
}

bool Machine::waitUntil(Time deadline, const std::function<bool()>& ready) {
    while (true) {
        if (daemon_ != nullptr && now >= nextOfService()) daemon_->isDead = true;
        if (isDead()) throw Killed();
        if (!process().isStopped && ready()) return true;
        if (!process().isStopped && now >= deadline) return false;
        step(std::min(process().isStopped ? forever : deadline, nextOfService()));
    }
}

int Machine::notify(std::string_view state) {
    if (!process().isServices) return 0;
    if (queueIsFull) return EAGAIN;
    constexpr std::string_view time = "WATCHDOG_USEC=";
    if (state.starts_with(time)) watchdogTime = std::chrono::microseconds(std::stoi(std::string(state.substr(14))));
    if (state.starts_with("WATCHDOG")) lastSignOfLife = now;
    if (state == "READY=1") isReady = true;
    return 0;
}

bool Machine::diesHere() {
    if (!isDead() && callsBefore > 0 && --callsBefore == 0) interruption();
    if (!isDead() && killAtCall > 0 && --killAtCall == 0) {
        process().isDead = true;
        ++kills;
    }
    return isDead();
}

void Machine::expectAlive(const std::string& what) {
    for (const auto& [name, device] : devices) {
        if (device.isInhibited && device.isInhibitedByHelper && !device.couldNotWork)
            wrongs.push_back(what + " while " + name + " is muted");
    }
}

std::string Machine::mapped(const std::string& path) const {
    if (path.starts_with("/proc/self/fd/") || path.starts_with("/dev/")) return path;
    return path == "/" ? root() : root() + path;
}

int Machine::fault(const std::string& path, bool grows) const {
    if (path.starts_with(folder())) {
        if (diskIsReadOnly) return EROFS;
        if (diskIsFull && grows) return ENOSPC;
    }
    return runIsFull && grows && path.starts_with(root() + "/run") ? ENOSPC : 0;
}

int Machine::newDescriptor(OpenFile file) {
    const int number = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    if (number < 0) throw std::runtime_error("the test has no descriptor left");
    files[number] = std::move(file);
    return number;
}

std::string Machine::pathOf(int descriptor) const {
    const auto found = files.find(descriptor);
    return found == files.end() ? std::string() : found->second.path;
}

bool Machine::isReadable(int descriptor) const {
    const auto found = files.find(descriptor);
    if (found == files.end()) return false;
    const OpenFile& file = found->second;
    switch (file.kind) {
        case OpenFile::Kind::process:
            return !people.contains(file.process);
        case OpenFile::Kind::udev:
            return hasDeviceEvent;
        case OpenFile::Kind::login:
            return hasSessionEvent;
        case OpenFile::Kind::terminal:
            return hasTerminalEvent;
        case OpenFile::Kind::clock:
            return clockHasJumped;
        case OpenFile::Kind::group:
            return std::ranges::any_of(file.members, [this](int member) { return isReadable(member); });
        case OpenFile::Kind::file: {
            pollfd event{descriptor, POLLIN, 0};
            return ::poll(&event, 1, 0) > 0;
        }
        default:
            return false;
    }
}

}  // namespace kovra::helper::model
