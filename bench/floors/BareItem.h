#pragma once

#include <systemd/sd-bus.h>

namespace floors {

// A status item and its menu of eight entries, directly over sd-bus: the minimum that a panel accepts.
//
// It computes every reply again and caches nothing. It ignores most errors: if the item does not register, the
// measurement fails anyway.
class BareItem {
  public:
    enum Entry { Root, Mute, Hint, Settings, Login, Driver, About, Separator, Quit, EntryCount };
    using Chosen = void (*)(BareItem& item, Entry entry);

    // Connects to the session bus and registers with the panel.
    explicit BareItem(Chosen chosen);
    ~BareItem();
    BareItem(const BareItem&) = delete;
    BareItem& operator=(const BareItem&) = delete;

    sd_bus* bus() const { return bus_; }
    bool isMuted() const { return isMuted_; }
    // Changes the icon and the check mark, and notifies the panel.
    void switchMuted();
    // Handles pending messages. Returns false after the bus has disconnected.
    bool answer();

  private:
    static int itemCalled(sd_bus_message* call, void* self, sd_bus_error*);
    static int menuCalled(sd_bus_message* call, void* self, sd_bus_error*);
    void appendProperty(sd_bus_message* reply, const char* name) const;
    void appendPixmaps(sd_bus_message* reply) const;
    void appendEntry(sd_bus_message* reply, int entry) const;
    void appendLayout(sd_bus_message* reply, int entry, int depth) const;
    int replyLayout(sd_bus_message* call) const;
    int replyEntries(sd_bus_message* call) const;
    int readEvent(sd_bus_message* call);

    sd_bus* bus_ = nullptr;
    Chosen chosen_;
    bool isMuted_ = false;
};

}  // namespace floors
