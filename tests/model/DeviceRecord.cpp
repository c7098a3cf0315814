#include "tests/model/DeviceRecord.h"

#include <algorithm>
#include <cstddef>

namespace kovra::model {

namespace {

std::string folded(std::string name) {
    for (char& c : name) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c | 0x20);
    }
    return name;
}

}  // namespace

void DeviceRecord::attach(InterfaceID id, const std::string& key, const std::string& name) {
    const bool already = std::ranges::any_of(episodes_, [&](const Episode& e) { return e.id == id && !e.ended; });
    if (!already) episodes_.push_back({id, key, ++stamp_, std::nullopt});
    if (std::ranges::find(known_, key, &Known::key) == known_.end()) known_.push_back({key, name, folded(name)});
}

std::optional<DeviceRecord::Removal> DeviceRecord::remove(InterfaceID id) {
    for (Episode& episode : episodes_) {
        if (episode.id != id || episode.ended) continue;
        episode.ended = ++stamp_;
        return Removal{episode.key, stamp_, !isAttached(episode.key)};
    }
    return std::nullopt;
}

bool DeviceRecord::endGrace(const Removal& removal) {
    if (isAttached(removal.key) || lastTouched(removal.key) != removal.stamp) return false;
    over_.insert(removal.stamp);
    return true;
}

bool DeviceRecord::isAttached(const std::string& key) const {
    return std::ranges::any_of(episodes_, [&](const Episode& e) { return !e.ended && e.key == key; });
}

DeviceRecord::Stamp DeviceRecord::lastTouched(const std::string& key) const {
    Stamp last = 0;
    for (const Episode& e : episodes_) {
        if (e.key == key) last = std::max(last, e.ended.value_or(e.began));
    }
    return last;
}

// Sorts by counting: the position of a device is the number of devices that come before it.
std::vector<DeviceRecord::Device> DeviceRecord::list() const {
    std::vector<bool> connected;
    for (const Known& known : known_) connected.push_back(isConnected(known.key));
    std::vector<Device> list(known_.size());
    for (std::size_t i = 0; i < known_.size(); ++i) {
        std::size_t place = 0;
        for (std::size_t j = 0; j < known_.size(); ++j) {
            const int byName = known_[j].folded.compare(known_[i].folded);
            const bool sameState = connected[j] == connected[i];
            if (sameState ? byName < 0 || (byName == 0 && j < i) : bool(connected[j])) ++place;
        }
        list[place] = {known_[i].key, known_[i].name, connected[i]};
    }
    return list;
}

}  // namespace kovra::model
