#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <filesystem>
#include <functional>
#include <map>
#include <string>

#include "helper/Descriptor.h"
#include "tests/helper/Users.h"
#include "tests/helper/flag/FlagRig.h"

namespace kovra::helper {

// A file with the content "on" outside the flag's folder. The helper must neither use nor change it when it reads the
// flag or hands it over.
class Secret {
  public:
    explicit Secret(const FlagRig& rig) : path_(rig.root() + "/secret") {
        writeFile(path_, "on");
        ::chmod(path_.c_str(), 0600);
    }
    const std::string& path() const { return path_; }
    bool isUntouched() const {
        struct stat status{};
        return ::lstat(path_.c_str(), &status) == 0 && readFile(path_) == "on" && status.st_nlink == 1 &&
               accessList(path_) == "u::rw-,g::---,o::---";
    }

  private:
    const std::string path_;
};

inline void makeSocket(const std::string& path) {
    // The path may be too long for a socket address. A path through the descriptor of the folder is short enough.
    const std::filesystem::path full(path);
    const Descriptor folder(::open(full.parent_path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    const std::string name = "/proc/self/fd/" + std::to_string(folder.number()) + "/" + full.filename().string();
    const Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    name.copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(::bind(socket.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
}

// Returns functions that each create something other than a regular file at a path. The key describes what is created.
inline std::map<std::string, std::function<void(const std::string&)>> intruders(const Secret& secret) {
    return {
        {"a link to a file that says on",
         [&](const std::string& path) { std::filesystem::create_symlink(secret.path(), path); }},
        {"a link that leads nowhere",
         [](const std::string& path) { std::filesystem::create_symlink("/nowhere/at/all", path); }},
        {"a link to itself", [](const std::string& path) { std::filesystem::create_symlink(path, path); }},
        {"a pipe that nobody writes to", [](const std::string& path) { ::mkfifo(path.c_str(), 0666); }},
        {"a socket", [](const std::string& path) { makeSocket(path); }},
        {"an empty folder", [](const std::string& path) { std::filesystem::create_directory(path); }},
        {"a folder with something in it",
         [](const std::string& path) {
             std::filesystem::create_directory(path);
             writeFile(path + "/kept", "on");
         }},
    };
}

}  // namespace kovra::helper
