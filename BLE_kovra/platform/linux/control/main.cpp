// ble-kovractl explains the state of the trackpad, and controls the running application.

#include <unistd.h>

#include <cstdio>
#include <string>
#include <variant>
#include <vector>

#include "BLE_kovra/control/Arguments.h"
#include "BLE_kovra/control/Checklist.h"
#include "BLE_kovra/control/Facts.h"
#include "BLE_kovra/control/StatusJson.h"
#include "BLE_kovra/control/StatusText.h"
#include "BLE_kovra/control/Verdict.h"
#include "BLE_kovra/platform/linux/control/HelperService.h"
#include "BLE_kovra/platform/linux/control/Pads.h"
#include "BLE_kovra/platform/linux/control/People.h"
#include "BLE_kovra/platform/linux/control/RunningApplication.h"
#include "BLE_kovra/platform/linux/desktop/BuildBundle.h"
#include "BLE_kovra/platform/linux/desktop/XdgEnvironment.h"
#include "BLE_kovra/platform/posix/ProcessStart.h"

namespace {

using kovra::control::Command;
using kovra::control::Facts;

constexpr const char* flagFile = "/Library/Application Support/ble-kovra/state";
constexpr int cannotTell = 2;

std::string version() {
    return std::get<std::string>(kovra::BuildBundle().infoDictionaryValue("CFBundleShortVersionString").value());
}

Facts collect() {
    Facts facts;
    facts.version = version();
    facts.asker = kovra::control::personOf(::geteuid());
    facts.isRemote = kovra::control::isRemoteSession();
    facts.desktops = kovra::desktopNames();
    kovra::control::readPads(facts.pads, facts.padsError);
    facts.application = kovra::control::askApplication();
    facts.application.processes = kovra::control::processesNamed("ble-kovra");
    facts.service = kovra::control::helperService();
    facts.flag = kovra::control::readFlag(flagFile);
    facts.seat = kovra::control::seat();
    return facts;
}

// Prints the text. Returns the exit code, or `cannotTell` if the text cannot be printed.
int print(const std::string& text, int exitCode) {
    std::fputs(text.c_str(), stdout);
    return std::fflush(stdout) == 0 && std::ferror(stdout) == 0 ? exitCode : cannotTell;
}

int print(const std::vector<std::string>& lines, int exitCode) {
    std::string text;
    for (const std::string& line : lines) text += line + '\n';
    return print(text, exitCode);
}

int performAction(const std::string& action) {
    const char* failure = nullptr;
    switch (kovra::control::askForAction(action)) {
        case kovra::control::Performed::yes:
            return 0;
        case kovra::control::Performed::notRunning:
            failure = "BLE-kovra is not running in this session";
            break;
        case kovra::control::Performed::refused:
            failure = "the running program does not know this action; restart it";
            break;
        case kovra::control::Performed::silent:
            failure = "BLE-kovra does not answer";
            break;
    }
    std::fprintf(stderr, "ble-kovractl: %s\n", failure);
    return 1;
}

int run(const Command& command) {
    if (command.kind == Command::Kind::action) return performAction(command.action);
    const Facts facts = collect();
    if (command.kind == Command::Kind::doctor) {
        const auto checks = kovra::control::checklistOf(facts);
        return print(kovra::control::checklistText(checks), kovra::control::exitCodeOf(checks));
    }
    const int exitCode = static_cast<int>(kovra::control::verdictOf(facts).answer);
    if (command.isJson) return print(kovra::control::statusJson(facts) + '\n', exitCode);
    return print(kovra::control::statusText(facts), exitCode);
}

}  // namespace

int main(int count, char** arguments) {
    kovra::prepareProcess();
    const auto parsed = kovra::control::parse({arguments + (count > 0 ? 1 : 0), arguments + count}, version());
    if (parsed.command) return run(*parsed.command);
    std::fputs(parsed.reply.error.c_str(), stderr);
    return print(parsed.reply.output, parsed.reply.exitCode);
}
