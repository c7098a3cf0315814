#include "bench/floors/BareItem.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <vector>

namespace floors {
namespace {

constexpr const char* itemPath = "/StatusNotifierItem";
constexpr const char* itemInterface = "org.kde.StatusNotifierItem";
constexpr const char* menuPath = "/MenuBar";
constexpr const char* menuInterface = "com.canonical.dbusmenu";
constexpr const char* watcher = "org.kde.StatusNotifierWatcher";
constexpr const char* properties = "org.freedesktop.DBus.Properties";

constexpr std::array<const char*, BareItem::EntryCount> labels = {
    nullptr, "Mute trackpad", "Shortcut: Ctrl+Alt+T", "Settings…", "Launch at login", "Activate driver…", "About…",
    nullptr, "Quit",
};

struct Text {
    const char* name;
    const char* value;
};
constexpr Text itemTexts[] = {{"Category", "ApplicationStatus"},
                              {"Id", "BLE-kovra"},
                              {"Title", "BLE-kovra"},
                              {"Status", "Active"},
                              {"IconName", ""}};
constexpr const char* otherItemProperties[] = {"Menu", "ItemIsMenu", "IconPixmap", "ToolTip"};

class Reply {
  public:
    explicit Reply(sd_bus_message* call) { sd_bus_message_new_method_return(call, &message_); }
    ~Reply() { sd_bus_message_unref(message_); }
    Reply(const Reply&) = delete;
    Reply& operator=(const Reply&) = delete;

    operator sd_bus_message*() { return message_; }
    int send() { return sd_bus_send(nullptr, message_, nullptr); }

  private:
    sd_bus_message* message_ = nullptr;
};

// Draws the frame of a pad and the line between its buttons, with a slash if it is muted. The pixels are ARGB.
std::vector<std::uint8_t> drawn(int size, bool isMuted) {
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(size * size) * 4);
    const int left = size / 7, top = size / 5, right = size - left - 1, bottom = size - top - 1, pen = size / 22;
    const auto paint = [&](int x, int y) { bytes[static_cast<std::size_t>(y * size + x) * 4] = 0xff; };
    for (int width = 0; width < pen; ++width) {
        for (int x = left; x <= right; ++x) paint(x, top + width), paint(x, bottom - width);
        for (int y = top; y <= bottom; ++y) paint(left + width, y), paint(right - width, y);
        for (int y = size / 2; y <= bottom; ++y) paint(size / 2 + width, y);
        for (int x = left; isMuted && x <= right; ++x) paint(x, x + width);
    }
    return bytes;
}

void appendText(sd_bus_message* reply, const char* name, const char* value) {
    sd_bus_message_append(reply, "{sv}", name, "s", value);
}

}  // namespace

BareItem::BareItem(Chosen chosen) : chosen_(chosen) {
    sd_bus_open_user(&bus_);
    sd_bus_add_object(bus_, nullptr, itemPath, itemCalled, this);
    sd_bus_add_object(bus_, nullptr, menuPath, menuCalled, this);
    sd_bus_call_method_async(bus_, nullptr, watcher, "/StatusNotifierWatcher", watcher, "RegisterStatusNotifierItem",
                             nullptr, nullptr, "s", itemPath);
    sd_bus_flush(bus_);
}

BareItem::~BareItem() { sd_bus_flush_close_unref(bus_); }

void BareItem::switchMuted() {
    isMuted_ = !isMuted_;
    sd_bus_emit_signal(bus_, itemPath, itemInterface, "NewIcon", "");
    sd_bus_emit_signal(bus_, menuPath, menuInterface, "LayoutUpdated", "ui", 2u, 0);
}

bool BareItem::answer() {
    int result = 1;
    while (result > 0) result = sd_bus_process(bus_, nullptr);
    return result == 0;
}

int BareItem::itemCalled(sd_bus_message* call, void* self, sd_bus_error*) {
    const auto& item = *static_cast<const BareItem*>(self);
    if (sd_bus_message_is_method_call(call, properties, "Get") > 0) {
        const char* name = nullptr;
        if (sd_bus_message_read(call, "ss", nullptr, &name) < 0) return -EINVAL;
        Reply reply(call);
        item.appendProperty(reply, name);
        return reply.send();
    }
    if (sd_bus_message_is_method_call(call, properties, "GetAll") > 0) {
        Reply reply(call);
        sd_bus_message_open_container(reply, 'a', "{sv}");
        for (const Text& text : itemTexts) appendText(reply, text.name, text.value);
        for (const char* name : otherItemProperties) {
            sd_bus_message_open_container(reply, 'e', "sv");
            sd_bus_message_append(reply, "s", name);
            item.appendProperty(reply, name);
            sd_bus_message_close_container(reply);
        }
        sd_bus_message_close_container(reply);
        return reply.send();
    }
    // Clicks on the icon have no effect, since the panel opens the menu.
    return sd_bus_message_is_method_call(call, itemInterface, nullptr) > 0 ? Reply(call).send() : 0;
}

void BareItem::appendProperty(sd_bus_message* reply, const char* name) const {
    const auto is = [name](const char* other) { return std::strcmp(name, other) == 0; };
    if (is("Menu")) {
        sd_bus_message_append(reply, "v", "o", menuPath);
    } else if (is("ItemIsMenu")) {
        sd_bus_message_append(reply, "v", "b", 1);
    } else if (is("IconPixmap")) {
        appendPixmaps(reply);
    } else if (is("ToolTip")) {
        sd_bus_message_append(reply, "v", "(sa(iiay)ss)", "", 0, "BLE-kovra", "");
    } else {
        const char* value = "";
        for (const Text& text : itemTexts) value = is(text.name) ? text.value : value;
        sd_bus_message_append(reply, "v", "s", value);
    }
}

void BareItem::appendPixmaps(sd_bus_message* reply) const {
    sd_bus_message_open_container(reply, 'v', "a(iiay)");
    sd_bus_message_open_container(reply, 'a', "(iiay)");
    for (const int size : {22, 44}) {
        const std::vector<std::uint8_t> bytes = drawn(size, isMuted_);
        sd_bus_message_open_container(reply, 'r', "iiay");
        sd_bus_message_append(reply, "ii", size, size);
        sd_bus_message_append_array(reply, 'y', bytes.data(), bytes.size());
        sd_bus_message_close_container(reply);
    }
    sd_bus_message_close_container(reply);
    sd_bus_message_close_container(reply);
}

int BareItem::menuCalled(sd_bus_message* call, void* self, sd_bus_error*) {
    auto& item = *static_cast<BareItem*>(self);
    const auto is = [call](const char* method) {
        return sd_bus_message_is_method_call(call, menuInterface, method) > 0;
    };
    if (is("GetLayout")) return item.replyLayout(call);
    if (is("GetGroupProperties")) return item.replyEntries(call);
    if (is("AboutToShow")) return sd_bus_reply_method_return(call, "b", 0);
    if (is("Event")) return item.readEvent(call);
    if (sd_bus_message_is_method_call(call, properties, "GetAll") > 0) {
        return sd_bus_reply_method_return(call, "a{sv}", 2, "Version", "u", 3u, "Status", "s", "normal");
    }
    return 0;
}

void BareItem::appendEntry(sd_bus_message* reply, int entry) const {
    sd_bus_message_open_container(reply, 'a', "{sv}");
    if (const char* label = labels[static_cast<std::size_t>(entry)]) appendText(reply, "label", label);
    if (entry == Root) appendText(reply, "children-display", "submenu");
    if (entry == Separator) appendText(reply, "type", "separator");
    if (entry == Hint) sd_bus_message_append(reply, "{sv}", "enabled", "b", 0);
    if (entry == Mute || entry == Login) {
        appendText(reply, "toggle-type", "checkmark");
        sd_bus_message_append(reply, "{sv}", "toggle-state", "i", entry == Mute && isMuted_ ? 1 : 0);
    }
    if (entry == Settings || entry == Quit) {
        const char* key = entry == Quit ? "q" : "comma";
        sd_bus_message_append(reply, "{sv}", "shortcut", "aas", 1, 2, "Control", key);
    }
    sd_bus_message_close_container(reply);
}

void BareItem::appendLayout(sd_bus_message* reply, int entry, int depth) const {
    sd_bus_message_open_container(reply, 'r', "ia{sv}av");
    sd_bus_message_append(reply, "i", entry);
    appendEntry(reply, entry);
    sd_bus_message_open_container(reply, 'a', "v");
    for (int child = Root + 1; entry == Root && depth != 0 && child < EntryCount; ++child) {
        sd_bus_message_open_container(reply, 'v', "(ia{sv}av)");
        appendLayout(reply, child, 0);
        sd_bus_message_close_container(reply);
    }
    sd_bus_message_close_container(reply);
    sd_bus_message_close_container(reply);
}

int BareItem::replyLayout(sd_bus_message* call) const {
    int entry = 0, depth = 0;
    if (sd_bus_message_read(call, "ii", &entry, &depth) < 0 || entry < Root || entry >= EntryCount) return -EINVAL;
    Reply reply(call);
    sd_bus_message_append(reply, "u", 1u);
    appendLayout(reply, entry, depth);
    return reply.send();
}

int BareItem::replyEntries(sd_bus_message* call) const {
    Reply reply(call);
    sd_bus_message_open_container(reply, 'a', "(ia{sv})");
    sd_bus_message_enter_container(call, 'a', "i");
    for (int entry = 0; sd_bus_message_read(call, "i", &entry) > 0;) {
        if (entry < Root || entry >= EntryCount) continue;
        sd_bus_message_open_container(reply, 'r', "ia{sv}");
        sd_bus_message_append(reply, "i", entry);
        appendEntry(reply, entry);
        sd_bus_message_close_container(reply);
    }
    sd_bus_message_close_container(reply);
    return reply.send();
}

int BareItem::readEvent(sd_bus_message* call) {
    int entry = 0;
    const char* event = nullptr;
    if (sd_bus_message_read(call, "is", &entry, &event) < 0 || entry < Root || entry >= EntryCount) return -EINVAL;
    const int result = sd_bus_reply_method_return(call, nullptr);
    if (std::strcmp(event, "clicked") == 0) chosen_(*this, static_cast<Entry>(entry));
    return result;
}

}  // namespace floors
