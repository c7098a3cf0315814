#pragma once

#include <grp.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>

#include "tests/helper/Users.h"

namespace kovra::helper {

// A user namespace to which several UIDs and GIDs are mapped. An ordinary user needs the programs newuidmap and
// newgidmap to create it. These programs permit the ranges that /etc/subuid and /etc/subgid list for the user.
class NamespaceOfUsers {
  public:
    // Runs the work in a child process, as root of a new user namespace. Returns why the namespace cannot be created,
    // or an empty string.
    static std::string run(const std::function<void()>& work) {
        std::array<int, 2> entered{};
        std::array<int, 2> mapped{};
        if (::pipe(entered.data()) != 0 || ::pipe(mapped.data()) != 0) return "there are no pipes";
        std::fflush(nullptr);
        const pid_t process = ::fork();
        if (process == 0) {
            send(entered[1], ::unshare(CLONE_NEWUSER) == 0);
            if (receive(mapped[0])) runAsItsRoot(work);
            ::_exit(1);
        }
        std::string obstacle;
        if (!receive(entered[0]))
            obstacle = "user namespaces are denied";
        else if (!map("newuidmap", "/etc/subuid", process, ::geteuid()) ||
                 !map("newgidmap", "/etc/subgid", process, ::getegid()))
            obstacle = "this user gets no numbers of other users by /etc/subuid and /etc/subgid";
        send(mapped[1], obstacle.empty());
        int status = -1;
        ::waitpid(process, &status, 0);
        for (const int end : {entered[0], entered[1], mapped[0], mapped[1]}) ::close(end);
        if (obstacle.empty()) {
            EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "in the child process, see above";
        }
        return obstacle;
    }

  private:
    static void send(int pipe, bool isGood) {
        const char word = isGood ? 'y' : 'n';
        if (::write(pipe, &word, 1) != 1) ::_exit(1);
    }
    static bool receive(int pipe) {
        char word = 0;
        return ::read(pipe, &word, 1) == 1 && word == 'y';
    }

    // Maps this UID or GID to 0 in the namespace, and adds a range that the file lists for the user. Returns whether
    // that succeeded.
    static bool map(const std::string& program, const char* file, pid_t process, unsigned number) {
        const passwd* user = ::getpwuid(::geteuid());
        std::ifstream lines(file);
        for (std::string line; user != nullptr && std::getline(lines, line);) {
            std::istringstream fields(line);
            std::string name;
            unsigned first = 0;
            unsigned count = 0;
            char colon = 0;
            if (!std::getline(fields, name, ':') || !(fields >> first >> colon >> count)) continue;
            if ((name != user->pw_name && name != std::to_string(user->pw_uid)) || count <= bob + 1) continue;
            std::ostringstream command;
            command << program << ' ' << process << " 0 " << number << " 1 1 " << first << ' ' << count
                    << " 2>/dev/null";
            return std::system(command.str().c_str()) == 0;
        }
        return false;
    }

    static void runAsItsRoot(const std::function<void()>& work) {
        try {
            if (::setgroups(0, nullptr) != 0 || ::setresgid(0, 0, 0) != 0 || ::setresuid(0, 0, 0) != 0)
                ADD_FAILURE() << "cannot become the root of the namespace";
            else
                work();
        } catch (const std::exception& error) {
            ADD_FAILURE() << error.what();
        }
        std::fflush(nullptr);
        ::_exit(::testing::Test::HasFailure() ? 1 : 0);
    }
};

// Runs a test that needs root, because it changes owners of files or acts as several users. An ordinary user runs it in
// a NamespaceOfUsers. If that is impossible, the test fails and says why.
inline void runAsRoot(const std::function<void()>& test) {
    if (::geteuid() == 0) {
        test();
        return;
    }
    for (const char* search : {"command -v newuidmap >/dev/null", "command -v newgidmap >/dev/null"})
        ASSERT_EQ(std::system(search), 0) << "please install the package uidmap";
    const std::string obstacle = NamespaceOfUsers::run(test);
    ASSERT_EQ(obstacle, "") << "the test needs root, or a user namespace with several users";
}

}  // namespace kovra::helper
