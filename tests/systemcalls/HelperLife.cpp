#include <sys/stat.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>

#include "tests/helper/ServiceManager.h"
#include "tests/helper/WaitUntil.h"
#include "tests/systemcalls/Traced.h"

namespace kovra::systemcalls {

namespace {

using namespace std::chrono_literals;
using helper::Machine;
using helper::waitUntil;

// A failed step is retried after two seconds, and a failed unmuting sooner.
constexpr auto patience = 6s;
constexpr auto usual = 1500ms;
// At its end the helper retries for ten seconds.
constexpr auto atTheEnd = 20s;

const std::string flag = Machine::flagFolder + "/state";

// Writes the word as the application does: again after the helper has replaced the file.
class Writer {
  public:
    void say(const std::string& word) {
        word_ = word;
        struct stat status{};
        if (::stat(flag.c_str(), &status) != 0) return;
        file_ = status.st_ino;
        std::filesystem::resize_file(flag, 0);
        std::ofstream(flag, std::ios::in) << word;
    }
    void repeat() {
        struct stat status{};
        if (::stat(flag.c_str(), &status) == 0 && status.st_ino != file_) say(word_);
    }

  private:
    std::string word_;
    ino_t file_ = 0;
};

class Life {
  public:
    Life(Machine& machine, const std::string& program, const Failure& failure, const std::string& trace)
        : machine_(machine),
          manager_(Machine::notifySocketPath),
          traced_(program, {"NOTIFY_SOCKET=" + Machine::notifySocket}, failure, trace) {}
    ~Life() { std::filesystem::remove(Machine::notifySocketPath); }
    Life(const Life&) = delete;
    Life& operator=(const Life&) = delete;

    Outcome live() {
        Outcome outcome;
        outcome.result = course();
        outcome.log = traced_.log();
        helper::ChildProgram& process = traced_.process();
        const bool wasRunning = process.isRunning();
        process.signal(SIGTERM);
        if (!waitUntil([&] { return !process.isRunning(); }, atTheEnd)) return wrong("hangs at its end");
        const int code = process.result();
        if (const std::string breakage = traced_.breakage(); !breakage.empty()) return wrong(breakage);
        if (code != 0 && code != 1) return wrong("ends with " + std::to_string(code));
        if (wasRunning && !machine_.is("0")) outcome.result = "unmuted by the unit";
        if (!machine_.is("0") && !worksAfterRelease()) return wrong("stays muted after the end");
        outcome.log = traced_.log();
        outcome.isWrong = outcome.isWrong || !mistake_.empty();
        if (!mistake_.empty()) outcome.result = mistake_;
        return outcome;
    }

  private:
    // Does what the unit does after each end of the service. Returns whether the pad works then.
    bool worksAfterRelease() const { return machine_.start("--release")->result() == 0 && machine_.is("0"); }
    Outcome wrong(const std::string& what) {
        traced_.process().end(SIGKILL);
        return {what, true, traced_.log()};
    }

    std::string course() {
        helper::ChildProgram& process = traced_.process();
        bool isReady = false;
        bool cannotStart = false;
        const bool isAnswered = waitUntil(
            [&] {
                const std::string message = manager_.receive();
                isReady |= message == "READY=1";
                cannotStart |= message == "STATUS=Cannot start; trying again";
                return isReady || cannotStart || !process.isRunning();
            },
            patience);
        if (cannotStart || (isAnswered && !isReady)) return "did not start";
        const bool hasFlag = waitUntil([&] { return std::filesystem::exists(flag) || !process.isRunning(); }, patience);
        if (!process.isRunning()) return "ended";
        if (!hasFlag) return "muted nothing";
        Writer application;
        application.say("on");
        const auto before = std::chrono::steady_clock::now();
        const auto isMutedOrOver = [&] {
            application.repeat();
            return machine_.is("1") || !process.isRunning();
        };
        const bool isMuted = waitUntil(isMutedOrOver, patience);
        const bool isLate = !isReady || std::chrono::steady_clock::now() - before > usual;
        if (!process.isRunning()) return "ended";
        if (!isMuted) return "muted nothing";
        application.say("off");
        if (!waitUntil([&] { return machine_.is("0") || !process.isRunning(); }, patience)) mistake_ = "stays muted";
        if (!process.isRunning()) return "ended";
        return isLate ? "late" : "as usual";
    }

    Machine& machine_;
    helper::ServiceManager manager_;
    std::string mistake_;
    Traced traced_;
};

}  // namespace

Outcome helperLife(Machine& machine, const std::string& program, const Failure& failure, const std::string& trace) {
    std::filesystem::remove_all(Machine::root + "/run/ble-kovra-helper");
    for (const auto& entry : std::filesystem::directory_iterator(Machine::flagFolder)) std::filesystem::remove(entry);
    machine.computer.acceptWrites("input5", "0");
    return Life(machine, program, failure, trace).live();
}

}  // namespace kovra::systemcalls
