#include "BLE_kovra/platform/linux/control/People.h"

#include <pwd.h>
#include <systemd/sd-login.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string_view>
#include <system_error>

#include "BLE_kovra/platform/Utf8.h"
#include "BLE_kovra/platform/linux/loop/Handles.h"

namespace kovra::control {

namespace {

constexpr const char* mainSeat = "seat0";

std::string sessionText(int (*get)(const char*, char**), const char* session) {
    char* text = nullptr;
    if (get(session, &text) < 0 || text == nullptr) return "";
    const Allocated<char> owned(text);
    return text;
}

// Returns the value of this line of /proc/PID/status.
std::string statusValue(const std::string& status, std::string_view key) {
    const std::string start = "\n" + std::string(key) + ":\t";
    const auto found = ("\n" + status).find(start);
    if (found == std::string::npos) return "";
    const std::size_t begin = found + start.size() - 1;
    return status.substr(begin, status.find('\n', begin) - begin);
}

// Returns what can be read. Reading fails if the process ends meanwhile; the iterators of a stream would then throw.
std::string textOf(const std::filesystem::path& path) {
    std::ifstream file(path);
    std::string text;
    for (std::string line; std::getline(file, line);) text += line + '\n';
    return text;
}

std::optional<Process> processIn(const std::filesystem::path& folder, const std::string& name) {
    const std::string number = folder.filename();
    int id = 0;
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), id);
    if (error != std::errc() || end != number.data() + number.size()) return std::nullopt;
    const std::string status = textOf(folder / "status");
    const bool hasEnded = statusValue(status, "State").starts_with('Z');
    if (hasEnded || statusValue(status, "Name") != name) return std::nullopt;
    const std::string users = statusValue(status, "Uid");
    unsigned user = 0;
    if (std::from_chars(users.data(), users.data() + users.size(), user).ec != std::errc()) return std::nullopt;
    return Process{id, personOf(user)};
}

}  // namespace

Person personOf(uid_t user) {
    const passwd* found = ::getpwuid(user);
    return {user, found == nullptr ? std::to_string(user) : found->pw_name};
}

Seat seat() {
    char* session = nullptr;
    uid_t user = 0;
    const int result = sd_seat_get_active(mainSeat, &session, &user);
    const Allocated<char> owned(session);
    if (result < 0) return {result == -ENODATA, std::nullopt};
    if (session == nullptr) return {true, std::nullopt};
    const bool isAtMachine = sd_session_is_remote(session) == 0 &&
                             sessionText(sd_session_get_class, session) == "user" &&
                             sessionText(sd_session_get_state, session) == "active";
    return {true, isAtMachine ? std::optional(personOf(user)) : std::nullopt};
}

bool isRemoteSession() {
    char* session = nullptr;
    const int result = sd_pid_get_session(0, &session);
    const Allocated<char> owned(session);
    if (result >= 0 && session != nullptr) return sd_session_is_remote(session) > 0;
    return std::getenv("SSH_CONNECTION") != nullptr;
}

std::vector<Process> processesNamed(const std::string& name, const std::string& folder) {
    std::vector<Process> found;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        if (auto process = processIn(entry->path(), name)) found.push_back(std::move(*process));
    }
    std::ranges::sort(found, {}, &Process::id);
    return found;
}

std::string nameOfProcess(int process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/comm");
    std::string name;
    std::getline(file, name);
    return validUtf8(name);
}

}  // namespace kovra::control
