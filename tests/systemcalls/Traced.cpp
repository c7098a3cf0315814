#include "tests/systemcalls/Traced.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

#include "tests/support/posix/TempFolder.h"

namespace kovra::systemcalls {

namespace {

const std::string logFile = "/run/log";

std::vector<std::string> wordsFor(const std::string& program, const std::vector<std::string>& environment,
                                  const Failure& failure, const std::string& trace) {
    // strace is a grandchild of this process (-D), so that the program is its child.
    std::vector<std::string> words{"strace", "-D", "-qqq", "-o", trace.empty() ? "/dev/null" : trace};
    if (!trace.empty()) {
        words.insert(words.end(), {"-f", "-e", "trace=all"});
    } else if (!failure.call.empty()) {
        words.insert(words.end(),
                     {"-e", "trace=" + failure.call, "-e",
                      "inject=" + failure.call + ":error=" + failure.error + ":when=" + std::to_string(failure.place)});
    } else {
        words.insert(words.end(), {"-e", "trace=none"});
    }
    const std::string preloaded = "LD_PRELOAD=" + helper::sanitizer() + KOVRA_UMOCKDEV_PRELOAD;
    // The search for leaks cannot run in a traced process.
    const std::string options = "ASAN_OPTIONS=detect_leaks=0:exitcode=99";
    words.insert(words.end(), {"-E", preloaded, "-E", options, "-E", "UBSAN_OPTIONS=exitcode=99"});
    for (const std::string& each : environment) words.insert(words.end(), {"-E", each});
    words.push_back(program);
    return words;
}

void become(const std::vector<std::string>& words) {
    std::vector<char*> arguments;
    for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    ::execvp("strace", arguments.data());
}

}  // namespace

Traced::Traced(const std::string& program, const std::vector<std::string>& environment, const Failure& failure,
               const std::string& trace) {
    const std::string path = helper::Machine::root + logFile;
    std::filesystem::remove(path);
    process_ = std::make_unique<helper::ChildProgram>([&] {
        const int log = ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
        if (log < 0 || ::dup2(log, STDERR_FILENO) < 0 || ::close(log) != 0) return;
        ::signal(SIGPIPE, SIG_DFL);  // umockdev ignores it
        if (::chroot(helper::Machine::root.c_str()) != 0 || ::chdir("/") != 0) return;
        become(wordsFor(program, environment, failure, trace));
    });
}

std::string Traced::log() const {
    const std::string path = helper::Machine::root + logFile;
    return std::filesystem::exists(path) ? readFile(path) : "";
}

std::string Traced::breakage() const {
    const std::string text = log();
    for (const char* sign :
         {"AddressSanitizer", "runtime error:", "terminate called", "std::logic_error", "Assertion"}) {
        if (text.find(sign) != std::string::npos) return sign;
    }
    return "";
}

}  // namespace kovra::systemcalls
