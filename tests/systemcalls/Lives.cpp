#include <sys/mount.h>
#include <sys/wait.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

#include "tests/helper/PrivateMachine.h"
#include "tests/systemcalls/Traced.h"

// Runs lives of the helper and of the application on a private machine. The argument is the folder of both programs.
// What happens is said by the lines on standard input:
//
//   helper|application fail CALL ERROR PLACE     a life in which this system call fails
//   helper|application trace FILE                a usual life, whose system calls strace writes into the file
//
// For each line it prints one: "right" or "wrong", the result, and the log with its line feeds replaced, between tabs.

namespace {

using namespace kovra;

std::string inOneLine(std::string text) {
    for (std::size_t at = 0; (at = text.find_first_of("\n\t", at)) != std::string::npos;)
        text.replace(at, 1, text[at] == '\n' ? "\\n" : " ");
    return text;
}

// The listing tool reports an active driver, so that the application opens no alert.
void addListingTool() {
    const std::string above = helper::Machine::root + "/run/above";
    std::filesystem::create_directories(above);
    std::ofstream(above + "/systemextensionsctl")
        << "#!/bin/sh\necho 'org.pqrs.Karabiner-DriverKit-VirtualHIDDevice [activated enabled]'\n";
    ::chmod((above + "/systemextensionsctl").c_str(), 0755);
    const std::string layers = "lowerdir=" + above + ":/usr/bin";
    if (::mount("overlay", (helper::Machine::root + "/usr/bin").c_str(), "overlay", 0, layers.c_str()) != 0)
        throw std::runtime_error("cannot mount over /usr/bin");
}

systemcalls::Outcome lifeOf(helper::Machine& machine, const std::string& folder, const std::string& line) {
    std::istringstream words(line);
    std::string program, kind, trace;
    systemcalls::Failure failure;
    words >> program >> kind;
    if (kind == "trace")
        words >> trace;
    else
        words >> failure.call >> failure.error >> failure.place;
    const bool isHelper = program == "helper";
    const auto live = isHelper ? systemcalls::helperLife : systemcalls::applicationLife;
    const std::string path = folder + (isHelper ? "/ble-kovra-helper" : "/ble-kovra");
    systemcalls::Outcome outcome = live(machine, path, failure, trace.empty() ? "" : "/run/trace");
    // The first process of the namespace inherits strace.
    while (::waitpid(-1, nullptr, WNOHANG) > 0) {
    }
    if (!trace.empty()) std::filesystem::copy_file(helper::Machine::root + "/run/trace", trace);
    return outcome;
}

}  // namespace

int main(int count, char** arguments) {
    const std::string folder = count > 1 ? arguments[1] : ".";
    helper::inPrivateMachine([&](uid_t user) {
        helper::Machine machine(user);
        addListingTool();
        const auto application = machine.startApplication();
        for (std::string line; std::getline(std::cin, line);) {
            const systemcalls::Outcome outcome = lifeOf(machine, folder, line);
            std::cout << (outcome.isWrong ? "wrong" : "right") << '\t' << outcome.result << '\t'
                      << inOneLine(outcome.log) << '\n'
                      << std::flush;
        }
    });
    return ::testing::Test::HasFailure() ? 1 : 0;
}
