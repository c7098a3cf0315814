#pragma once

namespace kovra {

class LoginService;
class SystemLog;

struct LoginItem {
    // Has the desktop start the program at login if it does not, and no longer if it does. A refusal is one line in the
    // log; what is so then is seen by reading the status again.
    static void toggle(LoginService& service, SystemLog& log);
};

}  // namespace kovra
