#pragma once

namespace kovra {

class LoginService;
class SystemLog;

struct LoginItem {
    LoginItem() = delete;

    // Registers the program to start at login, or unregisters it if it is enabled. A failure is logged in one line.
    // Read the status again to see the result.
    static void toggle(LoginService& service, SystemLog& log);
};

}  // namespace kovra
