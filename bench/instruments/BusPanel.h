#pragma once

#include <systemd/sd-bus.h>

#include <map>
#include <string>
#include <vector>

#include "bench/instruments/Subject.h"

namespace bench {

// A panel on the session bus: the watcher and the host of status items. Like real panels, it reads the properties and
// the menu of an item, so that an item must deliver them. It chooses menu entries on command, and reports when an item
// registers.
class BusPanel {
  public:
    explicit BusPanel(const Subject& subject);
    ~BusPanel();
    BusPanel(const BusPanel&) = delete;
    BusPanel& operator=(const BusPanel&) = delete;

    sd_bus* bus() const { return bus_; }
    // Handles pending messages. Returns false after the bus has disconnected.
    bool answer();
    // Opens the menu of the item that registered last, and chooses the entry with this title. Reports when it has done
    // so, or that there is no such entry.
    void choose(const std::string& title);

  private:
    static int itemRegisters(sd_bus_message* call, void* self, sd_bus_error*);
    static int listItems(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void* self,
                         sd_bus_error*);
    static int ownerChanged(sd_bus_message* signal, void* self, sd_bus_error*);
    static int propertiesCame(sd_bus_message* reply, void* self, sd_bus_error*);
    static int layoutCame(sd_bus_message* reply, void* self, sd_bus_error*);
    static const sd_bus_vtable watcher_[];

    sd_bus_message* layoutQuestion() const;

    const Subject& subject_;
    sd_bus* bus_ = nullptr;
    std::vector<std::string> items_;
    // These members belong to the item that registered last.
    std::string name_;
    std::string menu_;
    std::map<std::string, int> entries_;
};

}  // namespace bench
