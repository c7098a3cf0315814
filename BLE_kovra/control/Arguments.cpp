#include "BLE_kovra/control/Arguments.h"

#include <algorithm>
#include <array>
#include <utility>

#include "BLE_kovra/control/Printable.h"

namespace kovra::control {

namespace {

constexpr const char* helpOfApplication =
    "usage: ble-kovra [--help | --version]\n"
    "\n"
    "Turns off the built-in trackpad while a mouse that you chose is connected. Runs in the background, as an icon in\n"
    "the tray. Starting it again while it runs opens its settings.\n"
    "\n"
    "  --help       print this text\n"
    "  --version    print the version\n"
    "\n"
    "ble-kovractl reports its state and controls it. See also ble-kovra(1).\n";

constexpr const char* helpOfControl =
    "usage: ble-kovractl COMMAND\n"
    "\n"
    "  status [--json]    say whether the trackpad is muted, since when, and why;\n"
    "                     exit code 0: it works, 1: it is muted, 2: that cannot be told\n"
    "  doctor             check everything that muting needs, and name the remedies;\n"
    "                     exit code 0: all is well, 1: something is not, 2: something cannot be told\n"
    "  toggle | on | off  switch muting over, on or off in the running application\n"
    "  settings           open its settings window\n"
    "  hotkey             let the desktop ask for a hot key, if it does so\n"
    "  quit               end it\n"
    "  --help, --version  print this text, or the version\n"
    "\n"
    "See also ble-kovractl(1).\n";

constexpr std::array<std::string_view, 6> actions{"toggle", "on", "off", "settings", "hotkey", "quit"};

// Returns the reply to --help and --version, if one of them is the only argument.
std::optional<Reply> information(const Arguments& arguments, const char* program, const char* help,
                                 const std::string& version) {
    if (arguments.size() != 1) return std::nullopt;
    if (arguments[0] == "--help") return Reply{0, help, ""};
    if (arguments[0] == "--version") return Reply{0, std::string(program) + ' ' + version + '\n', ""};
    return std::nullopt;
}

Reply misuse(const char* program, const std::string& what) {
    return {misused, "", std::string(program) + ": " + what + "; see " + program + " --help\n"};
}

Reply unknownArgument(const char* program, std::string_view argument) {
    return misuse(program, argument.empty() ? "an argument is empty" : "unknown argument: " + printable(argument));
}

}  // namespace

std::optional<Reply> replyOfApplication(const Arguments& arguments, const std::string& version) {
    if (arguments.empty()) return std::nullopt;
    if (auto reply = information(arguments, "ble-kovra", helpOfApplication, version)) return reply;
    const bool isFirstKnown = arguments[0] == "--help" || arguments[0] == "--version";
    return unknownArgument("ble-kovra", isFirstKnown ? arguments[1] : arguments[0]);
}

Parsed parse(const Arguments& arguments, const std::string& version) {
    constexpr const char* program = "ble-kovractl";
    if (arguments.empty()) return {std::nullopt, misuse(program, "an argument is missing")};
    if (auto reply = information(arguments, program, helpOfControl, version)) return {std::nullopt, std::move(*reply)};
    const std::string_view name = arguments[0];
    std::size_t known = 1;
    Command command;
    if (name == "status") {
        command.isJson = arguments.size() > 1 && arguments[1] == "--json";
        if (command.isJson) ++known;
    } else if (name == "doctor") {
        command.kind = Command::Kind::doctor;
    } else if (std::find(actions.begin(), actions.end(), name) != actions.end()) {
        command.kind = Command::Kind::action;
        command.action = name;
    } else if (name != "--help" && name != "--version") {
        known = 0;
    }
    if (arguments.size() > known) return {std::nullopt, unknownArgument(program, arguments[known])};
    return {command, {}};
}

}  // namespace kovra::control
