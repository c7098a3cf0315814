#include "BLE_kovra/platform/linux/hid/BatteryHIDPresence.h"

#include <dirent.h>

#include <string>
#include <system_error>
#include <utility>
#include <variant>

#include "BLE_kovra/platform/linux/hid/SysfsFile.h"
#include "BLE_kovra/platform/linux/loop/Handles.h"

namespace kovra {

namespace {

// The driver of wireless Logitech devices. It keeps the node of a disconnected device. It reports the battery without
// querying the device; other drivers would have to query it.
constexpr const char* driver = "logitech-hidpp-device";

const std::string batteriesFolder = "/power_supply/";

std::string line(const std::string& file) {
    const auto content = readSysfsFile(file);
    const auto* text = std::get_if<std::string>(&content);
    return text == nullptr ? "" : text->substr(0, text->find('\n'));
}

bool reportsAbsence(const std::string& battery) {
    return line(battery + "/scope") == "Device" && line(battery + "/online") == "0" &&
           line(battery + "/status") == "Unknown";
}

// Returns true only if there is at least one battery and all of them report the device as absent.
bool isAbsent(const std::string& nodeName) {
    const std::string path = "/sys/bus/hid/devices/" + nodeName + batteriesFolder;
    const Handle<DIR, ::closedir> folder(::opendir(path.c_str()));
    bool absent = false;
    while (const dirent* battery = folder ? ::readdir(folder.get()) : nullptr) {
        if (battery->d_name[0] == '.') continue;
        absent = reportsAbsence(path + battery->d_name);
        if (!absent) break;
    }
    return absent;
}

// Returns the name of the node whose battery has this path.
std::string ownerOf(const std::string& path) {
    const auto end = path.rfind(batteriesFolder);
    if (end == std::string::npos) return "";
    const auto begin = path.rfind('/', end - 1);
    return path.substr(begin + 1, end - begin - 1);
}

}  // namespace

BatteryHIDPresence::BatteryHIDPresence(SdEventLoop& loop, UdevdPaths udevd) : loop_(loop), udevd_(std::move(udevd)) {}

HIDPresence::Answer BatteryHIDPresence::query(const std::string& nodeName, const UdevHIDNode& node) {
    if (node.driver != driver) {
        forget(nodeName);
        return Answer::present;
    }
    nodes_.insert(nodeName);
    listen();  // before reading, so that no change in between is missed
    return isAbsent(nodeName) ? Answer::absent : Answer::present;
}

void BatteryHIDPresence::forget(const std::string& nodeName) {
    if (nodes_.erase(nodeName) == 0 || !nodes_.empty()) return;
    watch_.reset();
    events_.reset();
}

void BatteryHIDPresence::listen() {
    if (events_ && !events_->shouldReopen(udevd_)) return;
    if (!udev_) udev_.reset(udev_new());
    auto events = UdevEvents::open(udev_.get(), "power_supply", udevd_);
    if (!events) return;
    try {
        watch_ = loop_.watch(events->descriptor(), [this] { eventsReadable(); });
        events_ = std::move(events);
    } catch (const std::system_error&) {
        // If no descriptors are left, the next query tries again.
    }
}

void BatteryHIDPresence::eventsReadable() {
    std::set<std::string> concerned;
    for (auto event = events_->next(); event.kind != UdevEvents::Event::Kind::none; event = events_->next()) {
        if (event.kind == UdevEvents::Event::Kind::lost) {
            concerned = nodes_;
        } else if (const std::string node = ownerOf(event.path); nodes_.contains(node)) {
            concerned.insert(node);
        }
    }
    watch_->rearm();
    for (const std::string& node : concerned) changed(node);
}

}  // namespace kovra
