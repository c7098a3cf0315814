#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace kovra::model {

// The devices by definition: a record of episodes, each of one interface from its attachment to its removal. Every
// query looks up the record; nothing in it is cancelled or deleted.
class DeviceRecord {
  public:
    using InterfaceID = std::pair<bool, std::uint64_t>;  // whether it has a registry entry, and its number
    using Stamp = std::uint64_t;                         // of an attachment or a removal; later ones are greater

    struct Device {
        std::string key;
        std::string name;
        bool connected;
    };
    struct Removal {
        std::string key;
        Stamp stamp;
        bool wasLast;
    };

    void attach(InterfaceID id, const std::string& key, const std::string& name);
    // Nothing if no such interface is attached.
    std::optional<Removal> remove(InterfaceID id);
    // The grace period after a last removal has ended. Returns whether the device was not attached again in it.
    bool endGrace(const Removal& removal);

    // Every device seen so far: connected first, then by name ignoring case, then by first attachment.
    std::vector<Device> list() const;

  private:
    struct Episode {
        InterfaceID id;
        std::string key;
        Stamp began;
        std::optional<Stamp> ended;
    };
    struct Known {
        std::string key;
        std::string name;
        std::string folded;
    };

    bool isAttached(const std::string& key) const;
    Stamp lastTouched(const std::string& key) const;
    // An interface is attached, or the grace period after the last removal is running.
    bool isConnected(const std::string& key) const { return isAttached(key) || !over_.contains(lastTouched(key)); }

    Stamp stamp_ = 0;
    std::vector<Episode> episodes_;
    std::set<Stamp> over_;  // the removals whose grace has ended
    std::vector<Known> known_;
};

}  // namespace kovra::model
