#include "bench/instruments/BusPanel.h"

#include <cstdlib>
#include <cstring>
#include <string_view>

#include "bench/instruments/Clocks.h"
#include "bench/instruments/Tell.h"

namespace bench {
namespace {

constexpr const char* watcherName = "org.kde.StatusNotifierWatcher";
constexpr const char* watcherPath = "/StatusNotifierWatcher";
constexpr const char* itemInterface = "org.kde.StatusNotifierItem";
constexpr const char* menuInterface = "com.canonical.dbusmenu";

int answerNothing(sd_bus_message* call, void*, sd_bus_error*) { return sd_bus_reply_method_return(call, nullptr); }

int isTrue(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*, sd_bus_error*) {
    return sd_bus_message_append(reply, "b", 1);
}

int isZero(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*, sd_bus_error*) {
    return sd_bus_message_append(reply, "i", 0);
}

// Calls `use` with the name of each property in the dictionary at the message's read position. `use` reads the value
// and returns true, or returns false to skip it.
template <class Use>
void forEachProperty(sd_bus_message* message, Use use) {
    sd_bus_message_enter_container(message, 'a', "{sv}");
    while (sd_bus_message_enter_container(message, 'e', "sv") > 0) {
        const char* name = nullptr;
        sd_bus_message_read(message, "s", &name);
        if (!use(std::string_view(name))) sd_bus_message_skip(message, "v");
        sd_bus_message_exit_container(message);
    }
    sd_bus_message_exit_container(message);
}

bool readText(sd_bus_message* message, const char* type, std::string& text) {
    const char* contents = nullptr;
    char kind = 0;
    if (sd_bus_message_peek_type(message, &kind, &contents) <= 0 || std::strcmp(contents, type) != 0) return false;
    const char* value = nullptr;
    if (sd_bus_message_read(message, "v", type, &value) < 0) return false;
    text = value;
    return true;
}

void readEntry(sd_bus_message* layout, std::map<std::string, int>& entries) {
    int number = 0;
    sd_bus_message_enter_container(layout, 'r', "ia{sv}av");
    sd_bus_message_read(layout, "i", &number);
    std::string label;
    forEachProperty(layout, [&](std::string_view name) { return name == "label" && readText(layout, "s", label); });
    std::erase(label, '_');  // underscores mark mnemonics
    entries[label] = number;
    sd_bus_message_enter_container(layout, 'a', "v");
    while (sd_bus_message_enter_container(layout, 'v', "(ia{sv}av)") > 0) {
        readEntry(layout, entries);
        sd_bus_message_exit_container(layout);
    }
    sd_bus_message_exit_container(layout);
    sd_bus_message_exit_container(layout);
}

std::map<std::string, int> readLayout(sd_bus_message* reply) {
    std::map<std::string, int> entries;
    sd_bus_message_skip(reply, "u");
    readEntry(reply, entries);
    return entries;
}

}  // namespace

const sd_bus_vtable BusPanel::watcher_[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("RegisterStatusNotifierItem", "s", "", itemRegisters, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("RegisterStatusNotifierHost", "s", "", answerNothing, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_PROPERTY("RegisteredStatusNotifierItems", "as", listItems, 0, 0),
    SD_BUS_PROPERTY("IsStatusNotifierHostRegistered", "b", isTrue, 0, 0),
    SD_BUS_PROPERTY("ProtocolVersion", "i", isZero, 0, 0),
    SD_BUS_SIGNAL("StatusNotifierItemRegistered", "s", 0),
    SD_BUS_SIGNAL("StatusNotifierItemUnregistered", "s", 0),
    SD_BUS_SIGNAL("StatusNotifierHostRegistered", "", 0),
    SD_BUS_VTABLE_END,
};

BusPanel::BusPanel(const Subject& subject) : subject_(subject) {
    const bool stands = sd_bus_open_user(&bus_) >= 0 &&
                        sd_bus_add_object_vtable(bus_, nullptr, watcherPath, watcherName, watcher_, this) >= 0 &&
                        sd_bus_match_signal(bus_, nullptr, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                            "org.freedesktop.DBus", "NameOwnerChanged", ownerChanged, this) >= 0 &&
                        sd_bus_request_name(bus_, "org.kde.StatusNotifierHost-bench", 0) >= 0 &&
                        sd_bus_request_name(bus_, watcherName, 0) >= 0;
    if (!stands) std::exit(1);
}

BusPanel::~BusPanel() { sd_bus_flush_close_unref(bus_); }

bool BusPanel::answer() {
    int result = 1;
    while (result > 0) result = sd_bus_process(bus_, nullptr);
    return result == 0;
}

int BusPanel::itemRegisters(sd_bus_message* call, void* self, sd_bus_error*) {
    const long long moment = now();
    auto& panel = *static_cast<BusPanel*>(self);
    const long long cpu = panel.subject_.cpuTimeSoFar();
    const char* item = nullptr;
    if (const int result = sd_bus_message_read(call, "s", &item); result < 0) return result;
    const bool isPath = item[0] == '/';
    panel.name_ = isPath ? sd_bus_message_get_sender(call) : item;
    const char* path = isPath ? item : "/StatusNotifierItem";
    panel.menu_.clear();
    panel.items_.push_back(panel.name_ + path);
    const int result = sd_bus_reply_method_return(call, nullptr);
    tell(moment, "registered %lld", cpu);
    sd_bus_emit_signal(panel.bus_, watcherPath, watcherName, "StatusNotifierItemRegistered", "s",
                       panel.items_.back().c_str());
    sd_bus_call_method_async(panel.bus_, nullptr, panel.name_.c_str(), path, "org.freedesktop.DBus.Properties",
                             "GetAll", propertiesCame, self, "s", itemInterface);
    return result;
}

int BusPanel::listItems(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void* self,
                        sd_bus_error*) {
    sd_bus_message_open_container(reply, 'a', "s");
    for (const std::string& item : static_cast<const BusPanel*>(self)->items_) {
        sd_bus_message_append(reply, "s", item.c_str());
    }
    return sd_bus_message_close_container(reply);
}

int BusPanel::ownerChanged(sd_bus_message* signal, void* self, sd_bus_error*) {
    auto& panel = *static_cast<BusPanel*>(self);
    const char *name = nullptr, *before = nullptr, *after = nullptr;
    if (sd_bus_message_read(signal, "sss", &name, &before, &after) < 0 || after[0] != '\0') return 0;
    std::erase_if(panel.items_, [&](const std::string& item) {
        if (!item.starts_with(std::string(name) + "/")) return false;
        sd_bus_emit_signal(panel.bus_, watcherPath, watcherName, "StatusNotifierItemUnregistered", "s", item.c_str());
        return true;
    });
    return 0;
}

int BusPanel::propertiesCame(sd_bus_message* reply, void* self, sd_bus_error*) {
    auto& panel = *static_cast<BusPanel*>(self);
    if (sd_bus_message_is_method_error(reply, nullptr) > 0) return 0;
    forEachProperty(reply, [&](std::string_view name) { return name == "Menu" && readText(reply, "o", panel.menu_); });
    if (panel.menu_.empty()) return 0;
    sd_bus_message* question = panel.layoutQuestion();
    sd_bus_call_async(panel.bus_, nullptr, question, layoutCame, self, 0);
    sd_bus_message_unref(question);
    return 0;
}

int BusPanel::layoutCame(sd_bus_message* reply, void* self, sd_bus_error*) {
    if (sd_bus_message_is_method_error(reply, nullptr) == 0) static_cast<BusPanel*>(self)->entries_ = readLayout(reply);
    return 0;
}

sd_bus_message* BusPanel::layoutQuestion() const {
    sd_bus_message* question = nullptr;
    sd_bus_message_new_method_call(bus_, &question, name_.c_str(), menu_.c_str(), menuInterface, "GetLayout");
    sd_bus_message_append(question, "iias", 0, -1, 0);
    return question;
}

void BusPanel::choose(const std::string& title) {
    // Like a panel, announce that the menu will be shown, and read it again.
    sd_bus_call_method(bus_, name_.c_str(), menu_.c_str(), menuInterface, "AboutToShow", nullptr, nullptr, "i", 0);
    sd_bus_message* question = layoutQuestion();
    sd_bus_message* reply = nullptr;
    if (sd_bus_call(bus_, question, 0, nullptr, &reply) >= 0) entries_ = readLayout(reply);
    sd_bus_message_unref(reply);
    sd_bus_message_unref(question);
    const auto entry = entries_.find(title);
    if (entry == entries_.end()) {
        tell(now(), "no-entry");
        return;
    }
    const long long moment = now();
    sd_bus_message* chosen = nullptr;
    sd_bus_message_new_method_call(bus_, &chosen, name_.c_str(), menu_.c_str(), menuInterface, "Event");
    sd_bus_message_append(chosen, "isvu", entry->second, "clicked", "i", 0, 0u);
    sd_bus_message_set_expect_reply(chosen, 0);
    sd_bus_send(bus_, chosen, nullptr);
    sd_bus_flush(bus_);
    sd_bus_message_unref(chosen);
    tell(moment, "chosen");
}

}  // namespace bench
