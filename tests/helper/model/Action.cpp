#include "tests/helper/model/Action.h"

#include <cstddef>

namespace kovra::helper::model {

std::string describe(const Action& action) {
    static constexpr std::array names{"advance",
                                      "write",
                                      "keepOpen",
                                      "writeKept",
                                      "remove",
                                      "replace",
                                      "link",
                                      "linkElsewhere",
                                      "unlink",
                                      "dropLeft",
                                      "moveFolder",
                                      "openFolder",
                                      "startApplication",
                                      "killApplication",
                                      "renameApplication",
                                      "startOther",
                                      "sitDown",
                                      "leave",
                                      "greet",
                                      "comeRemotely",
                                      "closeSession",
                                      "showTerminal",
                                      "repeatSession",
                                      "plug",
                                      "plugUngranted",
                                      "grant",
                                      "unplug",
                                      "touch",
                                      "refuseToWork",
                                      "refuseToPause",
                                      "inhibit",
                                      "fillDisk",
                                      "protectDisk",
                                      "takeWatches",
                                      "takeDescriptors",
                                      "fillRun",
                                      "fillQueue",
                                      "breakLogin",
                                      "setClock",
                                      "kill",
                                      "killAtCall",
                                      "stop",
                                      "resume",
                                      "terminate",
                                      "stopService",
                                      "startService",
                                      "releaseByHand",
                                      "startSecond",
                                      "interrupt"};
    static_assert(names.size() == static_cast<std::size_t>(Action::Kind::count));
    std::string text = names.at(static_cast<std::size_t>(action.kind));
    text += " user " + std::to_string(action.user) + " number " + std::to_string(action.number);
    if (action.truth) text += " true";
    if (!action.text.empty()) text += " \"" + action.text + "\"";
    if (action.time.count() != 0) text += " " + std::to_string(action.time.count() / 1'000) + " us";
    for (const Action& inner : action.inner) text += ": " + describe(inner);
    return text;
}

}  // namespace kovra::helper::model
