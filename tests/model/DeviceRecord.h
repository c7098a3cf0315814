#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace kovra::model {

// The model's record of all devices, as episodes. An episode is the time of one interface from its attachment to its
// removal. Every query searches the whole record, and no episode is ever deleted.
class DeviceRecord {
  public:
    using InterfaceID = std::pair<bool, std::uint64_t>;  // whether it has a registry entry, and its number
    using Stamp = std::uint64_t;                         // numbers attachments and removals in order

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
    // Ends the interface's episode. Returns nothing if no such interface is attached.
    std::optional<Removal> remove(InterfaceID id);
    // Ends the grace period after this removal if the device has stayed detached since. Returns whether it has.
    bool endGrace(const Removal& removal);

    // Returns every device seen so far: connected first, then by name ignoring case, then by first attachment.
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
    // Returns whether an interface is attached, or the grace period after the last removal has not ended.
    bool isConnected(const std::string& key) const { return isAttached(key) || !over_.contains(lastTouched(key)); }

    Stamp stamp_ = 0;
    std::vector<Episode> episodes_;
    std::set<Stamp> over_;  // the removals whose grace period has ended
    std::vector<Known> known_;
};

}  // namespace kovra::model
