#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace kovra::model {

// What the program promises of its devices, by definition: a record of episodes, each one interface of one device from
// its attachment to its removal. Who is connected is looked up in the record each time it is asked; nothing in it is
// ever cancelled or forgotten.
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
    // The time after a last removal is up. Says whether the device stayed away.
    bool endGrace(const Removal& removal);

    // Every device ever attached: connected first, then by name, whatever the case, then by first sight.
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
    // An interface is attached, or the grace that began with the last removal is not over.
    bool isConnected(const std::string& key) const { return isAttached(key) || !over_.contains(lastTouched(key)); }

    Stamp stamp_ = 0;
    std::vector<Episode> episodes_;
    std::set<Stamp> over_;  // the removals whose grace has ended
    std::vector<Known> known_;
};

}  // namespace kovra::model
