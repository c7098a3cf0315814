#include "tests/model/Action.h"

#include <array>
#include <cstddef>

namespace kovra::model {

namespace {

std::string describe(const DeviceDescription& device) {
    const auto number = [](const std::optional<std::int64_t>& value) {
        return value ? std::to_string(*value) : "none";
    };
    return (device.product ? "'" + *device.product + "'" : "nameless") + " " + number(device.vendorID) + ":" +
           number(device.productID) + " x" + std::to_string(device.interfaceCount) +
           (device.registered ? "" : " unregistered");
}

}  // namespace

std::string describe(Property property) {
    static constexpr std::array names{"devices", "selectedIDs", "isEnabled", "mode", "blocking"};
    return names.at(static_cast<std::size_t>(property));
}

std::string describe(const Action& action) {
    using Kind = Action::Kind;
    const std::string number = std::to_string(action.number);
    const std::string time = std::to_string(action.time.count()) + " ns";
    switch (action.kind) {
        case Kind::attach:
            return "attach " + describe(action.device);
        case Kind::detach:
            return "detach " + number;
        case Kind::removeUnknown:
            return "removal reported of " + number;
        case Kind::attachAgain:
            return "attach again " + number;
        case Kind::rename:
            return "rename " + number + " to '" + action.text + "'";
        case Kind::advance:
            return "advance " + time;
        case Kind::advanceToWake:
            return "advance to the next end of grace, off by " + time;
        case Kind::stall:
            return "stall " + time;
        case Kind::runOneTurn:
            return "run one turn";
        case Kind::run:
            return "run";
        case Kind::select:
            return "select " + words::keys(action.keys);
        case Kind::enable:
            return "switch " + words::truth(action.truth);
        case Kind::setMode:
            return action.truth ? "mode always" : "mode onDevice";
        case Kind::pressHotKey:
            return "hot key";
        case Kind::failNext:
            return "fail next " + number + " writes: " + action.text;
        case Kind::failAlways:
            return "fail always: " + action.text;
        case Kind::recover:
            return "writes succeed again";
        case Kind::subscribe:
            return "subscriber " + number + " of " + describe(action.property) +
                   (action.truth ? ", notified at once" : "") + ", " + std::to_string(action.times) +
                   " times: " + describe(action.inner.at(0));
        case Kind::unsubscribe:
            return "unsubscribe " + number;
        case Kind::evaluate:
            return "evaluate";
        case Kind::quit:
            return "quit";
        case Kind::releaseDelegate:
            return "release the delegate";
        case Kind::relaunch:
            break;
    }
    std::string text = "relaunch";
    for (const Action& early : action.inner) text += " [" + describe(early) + "]";
    return text;
}

std::string words::keys(const std::set<std::string>& keys) {
    std::string text;
    for (const std::string& key : keys) text += "{" + key + "}";
    return text;
}

}  // namespace kovra::model
