#include "tests/helper/model/World.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <utility>

namespace kovra::helper::model {

namespace fs = std::filesystem;
using Kind = Action::Kind;

namespace {

// Writes through the descriptor as the application does. Returns whether that succeeded.
bool overwrite(const Descriptor& file, const std::string& text) {
    return ::pwrite(file.number(), text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()) &&
           ::ftruncate(file.number(), static_cast<off_t>(text.size())) == 0;
}

}  // namespace

World::World() {
    createFolder();
    for (const int shape : {0, 1, 4}) plug(shape, true);
}

void World::live() {
    while (true) {
        while (!isWanted || machine.now < startAt) machine.step(isWanted ? startAt : forever);
        createFolder();
        machine.run("--grant", true);
        ++grants;
        const int code = machine.run("", true);
        const bool isAnyMuted = std::ranges::any_of(machine.devices, [](const auto& entry) {
            return entry.second.isInhibited && entry.second.isInhibitedByHelper && !entry.second.couldNotWork;
        });
        if (code >= 0 && isAnyMuted) machine.wrongs.emplace_back("the helper has ended and left a pad muted");
        release();
        startAt = machine.now + std::chrono::seconds(1);
    }
}

// Does what systemd-tmpfiles does by the helper's configuration.
void World::createFolder() const {
    if (machine.diskIsReadOnly) return;
    std::error_code ignored;
    fs::create_directories(machine.folder(), ignored);
    ::chmod(machine.folder().c_str(), 0755);
    struct stat status{};
    if (::lstat(machine.flag().c_str(), &status) == 0 || machine.diskIsFull) return;
    writeFile(machine.flag(), "off");
    ::chmod(machine.flag().c_str(), 0644);
}

void World::release() {
    const bool runs = machine.isBusy();
    const int code = machine.run("--release", true);
    ++releases;
    if (!runs) wasReleaseKilled = code == -9;
    const bool isAnyMuted = std::ranges::any_of(machine.devices, [](const auto& entry) {
        return entry.second.isInhibitedByHelper && entry.second.isInhibited;
    });
    if (code == 0 && isAnyMuted) machine.wrongs.emplace_back("--release has succeeded and left a pad muted");
    if (code == 0 && runs) machine.wrongs.emplace_back("--release has succeeded while the helper runs");
    if (code > 0 && !runs && !isAnyMuted && machine.records().empty() && !machine.hasNoDescriptors)
        machine.wrongs.emplace_back("--release has failed although no pad is muted");
}

Device* World::device(int shape) {
    const auto found = inputs_.find(shape);
    return found == inputs_.end() ? nullptr : &machine.devices.at(found->second);
}

bool World::plug(int shape, bool isGranted) {
    if (device(shape) != nullptr) return false;
    Device made = shapes()[static_cast<std::size_t>(shape)].device;
    made.input = inputs_[shape] = "input" + std::to_string(++nextInput_);
    machine.devices[made.input] = made;
    machine.hasDeviceEvent = true;
    if (isGranted) machine.run("--grant", true);  // by udev's rule
    return true;
}

bool World::write(int user, const std::string& text) {
    if (machine.diskIsReadOnly) return false;
    struct stat status{};
    const bool isFile = ::lstat(machine.flag().c_str(), &status) == 0 && S_ISREG(status.st_mode);
    if (!isFile || !mayWrite(users.at(static_cast<std::size_t>(user)), machine.flag())) return false;
    const Descriptor file(::open(machine.flag().c_str(), O_WRONLY | O_CLOEXEC | O_NOFOLLOW));
    if (!overwrite(file, text)) return false;
    machine.noteWrite(machine.flag());
    return true;
}

bool World::keepOpen(int user) {
    kept_.erase(user);
    if (machine.diskIsReadOnly || !fs::is_regular_file(fs::symlink_status(machine.flag()))) return false;
    if (!mayWrite(users.at(static_cast<std::size_t>(user)), machine.flag())) return false;
    kept_[user] = Descriptor(::open(machine.flag().c_str(), O_WRONLY | O_CLOEXEC | O_NOFOLLOW));
    return true;
}

bool World::writeKept(int user, const std::string& text) {
    const auto kept = kept_.find(user);
    if (kept == kept_.end() || machine.diskIsReadOnly || !overwrite(kept->second, text)) return false;
    machine.noteWrite("/proc/self/fd/" + std::to_string(kept->second.number()));
    return true;
}

bool World::replace(int number) {
    if (!fs::exists(machine.folder())) return false;
    const std::string other = machine.folder() + "/other";
    fs::remove_all(other);
    if (number % 4 == 0) writeFile(other, "on");
    if (number % 4 == 1) fs::create_symlink(machine.root() + "/elsewhere", other);
    if (number % 4 == 2) ::mkfifo(other.c_str(), 0644);
    if (number % 4 == 3) {
        fs::create_directories(other + "/inside");
        fs::remove_all(machine.flag());
    }
    fs::remove_all(fs::is_directory(fs::symlink_status(machine.flag())) ? machine.flag() : other + ".none");
    fs::rename(other, machine.flag());
    return true;
}

bool World::startProcess(int user, const std::string& name) {
    const uid_t account = users.at(static_cast<std::size_t>(user));
    machine.startPerson(++nextProcess_, {.user = account, .name = name, .start = machine.now});
    return true;
}

std::optional<pid_t> World::application(int number) const {
    std::vector<pid_t> running;
    for (const auto& [process, person] : machine.people) {
        if (person.name == "ble-kovra") running.push_back(process);
    }
    if (running.empty()) return std::nullopt;
    return running[static_cast<std::size_t>(number) % running.size()];
}

bool World::perform(const Action& action) {
    const uid_t account = users.at(static_cast<std::size_t>(action.user));
    const auto setSession = [&](std::optional<Machine::Session> session) {
        machine.session = std::move(session);
        machine.hasSessionEvent = true;
        return true;
    };
    const auto setFault = [&](bool& fault) { return std::exchange(fault, action.truth) != action.truth; };
    Device* named = device(action.number);
    Process* daemon = machine.daemon();
    switch (action.kind) {
        case Kind::write:
            return write(action.user, action.text);
        case Kind::keepOpen:
            return keepOpen(action.user);
        case Kind::writeKept:
            return writeKept(action.user, action.text);
        case Kind::remove:
            return !machine.diskIsReadOnly && fs::remove_all(machine.flag()) > 0;
        case Kind::replace:
            return !machine.diskIsReadOnly && replace(action.number);
        case Kind::link:
        case Kind::linkElsewhere: {
            const std::string folder = action.kind == Kind::link ? machine.folder() : machine.root() + "/run";
            const std::string name = folder + "/second." + std::to_string(++names_);
            const bool isFile = fs::is_regular_file(fs::symlink_status(machine.flag()));
            return isFile && !machine.diskIsReadOnly && ::link(machine.flag().c_str(), name.c_str()) == 0;
        }
        case Kind::unlink: {
            int removed = 0;
            if (machine.diskIsReadOnly || !fs::exists(machine.folder())) return false;
            for (const auto& entry : fs::directory_iterator(machine.folder())) {
                if (entry.path().filename().string().starts_with("second."))
                    removed += fs::remove(entry.path()) ? 1 : 0;
            }
            return removed > 0;
        }
        case Kind::dropLeft:
            return !machine.diskIsReadOnly && fs::remove(machine.folder() + "/state.left." + std::to_string(account));
        case Kind::moveFolder: {
            if (machine.diskIsReadOnly || !fs::exists(machine.folder())) return false;
            fs::rename(machine.folder(), machine.root() + "/gone." + std::to_string(++names_));
            return true;
        }
        case Kind::openFolder:
            return !machine.diskIsReadOnly && ::chmod(machine.folder().c_str(), 0777) == 0;
        case Kind::startApplication:
            return startProcess(action.user, "ble-kovra");
        case Kind::startOther:
            return startProcess(action.user, "ble-kovra-demo");
        case Kind::killApplication:
        case Kind::renameApplication: {
            const auto process = application(action.number);
            if (!process) return false;
            if (action.kind == Kind::killApplication) return machine.endPerson(*process), true;
            machine.people.at(*process).name = "sh";
            return machine.describePerson(*process), true;
        }
        case Kind::sitDown:
            return setSession(Machine::Session{.user = account, .terminal = machine.shownTerminal == 0 ? 0U : 1U});
        case Kind::leave:
            return setSession(std::nullopt);
        case Kind::greet:
            return setSession(Machine::Session{.user = account, .type = "greeter"});
        case Kind::comeRemotely:
            return setSession(Machine::Session{.user = account, .isRemote = true});
        case Kind::closeSession:
            if (machine.session) machine.session->state = "closing";
            return machine.hasSessionEvent = true;
        case Kind::repeatSession:
            return machine.hasSessionEvent = true;
        case Kind::showTerminal:
            if (machine.shownTerminal == 0 && daemon != nullptr) return false;  // the kernel has none, or has them all
            machine.shownTerminal = static_cast<unsigned>(action.number);
            return machine.hasTerminalEvent = true;
        case Kind::plug:
        case Kind::plugUngranted:
            return plug(action.number, action.kind == Kind::plug);
        case Kind::grant:
            return machine.run("--grant", true) == 0;
        case Kind::unplug:
            if (named == nullptr) return false;
            machine.devices.erase(inputs_.at(action.number));
            inputs_.erase(action.number);
            return machine.hasDeviceEvent = true;
        case Kind::touch:
            return machine.hasDeviceEvent = true;
        case Kind::refuseToWork:
            return named != nullptr && setFault(named->refusesToWork);
        case Kind::refuseToPause:
            return named != nullptr && setFault(named->refusesToPause);
        case Kind::inhibit:
            // What the helper has muted, another program can only unmute.
            if (named == nullptr || named->isInhibited == action.truth) return false;
            if (named->isInhibited && named->refusesToWork) return false;
            named->isInhibited = action.truth;
            named->isInhibitedByHelper = false;
            return true;
        case Kind::fillDisk:
            return setFault(machine.diskIsFull);
        case Kind::protectDisk:
            return setFault(machine.diskIsReadOnly);
        case Kind::takeWatches:
            return setFault(machine.hasNoWatches);
        case Kind::takeDescriptors:
            return setFault(machine.hasNoDescriptors);
        case Kind::fillRun:
            return setFault(machine.runIsFull);
        case Kind::fillQueue:
            return setFault(machine.queueIsFull);
        case Kind::breakLogin:
            machine.hasSessionEvent = true;
            return setFault(machine.loginIsBroken);
        case Kind::setClock:
            machine.realTimeAtBoot += action.time;
            return machine.clockHasJumped = true;
        case Kind::kill:
            return daemon != nullptr && (daemon->isDead = true);
        case Kind::killAtCall:
            machine.killAtCall = action.number;
            return true;
        case Kind::stop:
            return daemon != nullptr && (daemon->isStopped = true);
        case Kind::resume:
            return daemon != nullptr && std::exchange(daemon->isStopped, false);
        case Kind::terminate:
        case Kind::stopService:
            if (action.kind == Kind::stopService) isWanted = false;
            if (daemon == nullptr) return false;
            machine.stopDeadline = machine.now + std::chrono::seconds(20);
            return daemon->hasSignal = true;
        case Kind::startService:
            return std::exchange(isWanted, true) != isWanted;
        case Kind::releaseByHand:
            release();
            return true;
        case Kind::startSecond:
            // Only beside a daemon: one that is started by hand would not end.
            return daemon != nullptr && machine.run("", false) != 0;
        case Kind::advance:
        case Kind::interrupt:
        case Kind::count:
            break;
    }
    return false;
}

}  // namespace kovra::helper::model
