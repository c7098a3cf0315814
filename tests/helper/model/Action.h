#pragma once

#include <sys/types.h>

#include <array>
#include <chrono>
#include <string>
#include <vector>

#include "tests/helper/Users.h"

namespace kovra::helper::model {

// One step of a life. All actions can be performed in any order, so that a failing life can be shortened. The comment
// beside each kind names the members that it uses. A user is an index into `users`, a device one into `shapes()`.
struct Action {
    enum class Kind {
        advance,  // time
        // --- the flag
        write,          // user, text
        keepOpen,       // user: opens the flag for writing, and keeps the descriptor
        writeKept,      // user, text: through that descriptor
        remove,         // the flag
        replace,        // number: puts another file, a link, a folder or a pipe in its place
        link,           // gives the flag a second name in its folder
        linkElsewhere,  // gives it a second name in another folder
        unlink,         // removes all second names
        dropLeft,       // user: removes the file that the user has left
        moveFolder,     // away
        openFolder,     // to others
        // --- people
        startApplication,   // user
        killApplication,    // number: of the application, among those that run
        renameApplication,  // number: the process executes another program
        startOther,         // user: a process with another name
        sitDown,            // user: has the active session
        leave,              // no session is active
        greet,              // the login screen is shown
        comeRemotely,       // user
        closeSession,       // the active session is closing
        showTerminal,       // number
        repeatSession,      // the login manager writes its files again, unchanged
        // --- devices
        plug,           // number: of the shape
        plugUngranted,  // number: the helper's group may not yet write the attribute
        grant,          // by hand, for all
        unplug,         // number
        touch,          // an event of a device that has not changed
        refuseToWork,   // number, truth
        refuseToPause,  // number, truth
        inhibit,        // number, truth: by another program
        // --- faults
        fillDisk,         // truth
        protectDisk,      // truth
        takeWatches,      // truth
        takeDescriptors,  // truth
        fillRun,          // truth
        fillQueue,        // truth
        breakLogin,       // truth
        setClock,         // time
        // --- the helper
        kill,
        killAtCall,  // number: before which of the next calls with an effect
        stop,        // SIGSTOP
        resume,      // SIGCONT
        terminate,   // SIGTERM
        stopService,
        startService,
        releaseByHand,
        startSecond,  // another daemon, by hand
        interrupt,    // number, inner: an action before that of the next calls with an effect
        count
    };

    Kind kind = Kind::advance;
    int user = 0;
    int number = 0;
    bool truth = false;
    std::string text{};
    std::chrono::nanoseconds time{0};
    std::vector<Action> inner{};
};

inline constexpr std::array<uid_t, 3> users{alice, bob, bob + 1};

std::string describe(const Action& action);

}  // namespace kovra::helper::model
