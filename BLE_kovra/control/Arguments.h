#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kovra::control {

// The arguments of a program, without its own name.
using Arguments = std::vector<std::string_view>;

// What a program prints and how it ends when its arguments alone decide that.
struct Reply {
    int exitCode = 0;
    std::string output;  // for standard output
    std::string error;   // for standard error
};

// The exit code for arguments that a program does not know. Of ble-kovractl it also means that something cannot be
// told.
inline constexpr int misused = 2;

// Returns the reply of ble-kovra to these arguments. Returns nullopt if there are none, so that the application starts.
std::optional<Reply> replyOfApplication(const Arguments& arguments, const std::string& version);

// A command of ble-kovractl.
struct Command {
    enum class Kind { status, doctor, action } kind = Kind::status;
    bool isJson = false;  // of status
    std::string action;   // of action: the name of the application's action, such as "toggle"
};

// The arguments of ble-kovractl: either a command, or the reply that the arguments alone decide.
struct Parsed {
    std::optional<Command> command;
    Reply reply;
};
Parsed parse(const Arguments& arguments, const std::string& version);

}  // namespace kovra::control
