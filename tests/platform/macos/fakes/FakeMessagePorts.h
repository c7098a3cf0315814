#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace kovra {

// The named ports of a login session. The system gives a name to one process at a time. Messages wait in the port of
// their receiver until a source of the port fires in its run loop.
struct FakeMessagePorts {
    // Gives the name to another process, which receives messages.
    static void takeByAnother(const std::string& name);
    // Gives the name to another process, which receives no messages.
    static void takeByOneThatIsDeaf(const std::string& name);
    // Takes all names away from other processes.
    static void clear();

    // Sends a message from another process to the port that this process has under the name. Returns false if it has
    // none.
    static bool sendFromAnother(const std::string& name);
    // Returns the names under which other processes have received messages from this one, in order.
    static std::vector<std::string> takeSent();
};

}  // namespace kovra
