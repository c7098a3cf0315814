#include "BLE_kovra/platform/linux/tray/StatusNotifierItem.h"

#include <sys/stat.h>

#include <string>
#include <string_view>
#include <utility>

#include "BLE_kovra/platform/linux/desktop/ProgramSearch.h"
#include "BLE_kovra/platform/linux/tray/DBusMenu.h"
#include "BLE_kovra/platform/linux/tray/IconPixmap.h"
#include "BLE_kovra/platform/posix/Path.h"

namespace kovra {

namespace {

constexpr std::string_view title = "BLE-kovra";

// Panels choose the next larger size and scale it down. Most show 16 or 22 pixels; 48 is a little more than twice that,
// for screens with a scale of 2.
constexpr std::array pixmapSizes{16, 22, 32, 48};

}  // namespace

StatusNotifierItem::StatusNotifierItem(const TrayContents& contents, const PanelLook& look, ActivationToken& token,
                                       std::string iconThemePath, PopUp popUp)
    : contents_(contents),
      look_(look),
      token_(token),
      iconThemePath_(std::move(iconThemePath)),
      popUp_(std::move(popUp)),
      methods_(methods(popUp_ != nullptr)) {}

void StatusNotifierItem::exportOn(BusConnection& bus) {
    slot_ = bus.exportObject(path, interface, methods_.data(), this);
    bus_ = &bus;
}

void StatusNotifierItem::detach() {
    slot_.reset();
    bus_ = nullptr;
}

void StatusNotifierItem::notify(const TrayChanges& changes) {
    if (bus_ == nullptr) return;
    const auto nothing = [](BusWriter&) {};
    if (changes.image) bus_->emit(path, interface, "NewIcon", nothing);
    if (changes.toolTip) bus_->emit(path, interface, "NewToolTip", nothing);
}

void StatusNotifierItem::writeProperty(BusWriter& writer, std::string_view name) const {
    if (name == "Category") writer.text("Hardware");
    if (name == "Id") writer.text("ble-kovra");
    if (name == "Title") writer.text(title);
    if (name == "Status") writer.text("Active");
    if (name == "WindowId") writer.integer(0);
    if (name == "IconThemePath") writer.text(iconThemePath_);
    if (name == "IconName") writer.text(contents_.image ? iconName(contents_.image->name, look_.look()) : "");
    if (name == "IconPixmap") writePixmaps(writer);
    if (name == "ToolTip") writeToolTip(writer);
    if (name == "IconAccessibleDesc") writer.text(contents_.toolTip);
    if (name == "ItemIsMenu") writer.boolean(true);
    if (name == "Menu") writer.path(DBusMenu::path);
    if (name == "OverlayIconName" || name == "AttentionIconName" || name == "AttentionMovieName") writer.text("");
    if (name == "OverlayIconPixmap" || name == "AttentionIconPixmap") writer.openArray("(iiay)").close();
}

// The pixmaps are rendered for each request: panels read them rarely, and a cache would permanently use memory.
void StatusNotifierItem::writePixmaps(BusWriter& writer) const {
    writer.openArray("(iiay)");
    for (const int pixels : pixmapSizes) {
        if (!contents_.image) break;
        writer.openStruct("iiay").integer(pixels).integer(pixels);
        writer.bytes(argbPixmap(*contents_.image, pixels, paintOf(look_.look()))).close();
    }
    writer.close();
}

// The state is the title, because LXQt's panel shows nothing else. Panels interpret only the description as markup.
void StatusNotifierItem::writeToolTip(BusWriter& writer) const {
    writer.openStruct("sa(iiay)ss").text("").openArray("(iiay)").close();
    writer.text(contents_.toolTip).text(title).close();
}

int StatusNotifierItem::property(sd_bus*, const char*, const char*, const char* name, sd_bus_message* reply,
                                 void* context, sd_bus_error*) {
    auto* item = static_cast<StatusNotifierItem*>(context);
    if (item == nullptr) return 0;
    BusWriter writer(reply);
    item->writeProperty(writer, name);
    return writer.result();
}

int StatusNotifierItem::click(sd_bus_message* call, void* context, sd_bus_error*) {
    auto* item = static_cast<StatusNotifierItem*>(context);
    int x = 0;
    int y = 0;
    const int result = sd_bus_message_read(call, "ii", &x, &y);
    if (item == nullptr || result < 0) return result;
    if (item->popUp_) item->popUp_(x, y);
    return sd_bus_reply_method_return(call, "");
}

int StatusNotifierItem::scroll(sd_bus_message* call, void*, sd_bus_error*) {
    return sd_bus_reply_method_return(call, "");
}

int StatusNotifierItem::provideToken(sd_bus_message* call, void* context, sd_bus_error*) {
    auto* item = static_cast<StatusNotifierItem*>(context);
    const char* token = nullptr;
    const int result = sd_bus_message_read(call, "s", &token);
    if (item == nullptr || result < 0) return result;
    item->token_.provideForClick(token);
    return sd_bus_reply_method_return(call, "");
}

const std::array<sd_bus_vtable, 30> StatusNotifierItem::vtable = {{
    SD_BUS_VTABLE_START(0),
    SD_BUS_PROPERTY("Category", "s", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Id", "s", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Title", "s", property, 0, 0),
    SD_BUS_PROPERTY("Status", "s", property, 0, 0),
    SD_BUS_PROPERTY("WindowId", "i", property, 0, 0),
    SD_BUS_PROPERTY("IconThemePath", "s", property, 0, 0),
    SD_BUS_PROPERTY("IconName", "s", property, 0, 0),
    SD_BUS_PROPERTY("IconPixmap", "a(iiay)", property, 0, 0),
    SD_BUS_PROPERTY("IconAccessibleDesc", "s", property, 0, 0),
    SD_BUS_PROPERTY("OverlayIconName", "s", property, 0, 0),
    SD_BUS_PROPERTY("OverlayIconPixmap", "a(iiay)", property, 0, 0),
    SD_BUS_PROPERTY("AttentionIconName", "s", property, 0, 0),
    SD_BUS_PROPERTY("AttentionIconPixmap", "a(iiay)", property, 0, 0),
    SD_BUS_PROPERTY("AttentionMovieName", "s", property, 0, 0),
    SD_BUS_PROPERTY("ToolTip", "(sa(iiay)ss)", property, 0, 0),
    SD_BUS_PROPERTY("ItemIsMenu", "b", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Menu", "o", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_METHOD_WITH_ARGS("Activate", SD_BUS_ARGS("i", x, "i", y), SD_BUS_NO_RESULT, click,
                            SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("SecondaryActivate", SD_BUS_ARGS("i", x, "i", y), SD_BUS_NO_RESULT, click,
                            SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("ContextMenu", SD_BUS_ARGS("i", x, "i", y), SD_BUS_NO_RESULT, click,
                            SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("Scroll", SD_BUS_ARGS("i", delta, "s", orientation), SD_BUS_NO_RESULT, scroll,
                            SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS("ProvideXdgActivationToken", SD_BUS_ARGS("s", token), SD_BUS_NO_RESULT, provideToken,
                            SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_SIGNAL("NewTitle", "", 0),
    SD_BUS_SIGNAL("NewIcon", "", 0),
    SD_BUS_SIGNAL("NewAttentionIcon", "", 0),
    SD_BUS_SIGNAL("NewOverlayIcon", "", 0),
    SD_BUS_SIGNAL("NewToolTip", "", 0),
    SD_BUS_SIGNAL_WITH_ARGS("NewStatus", SD_BUS_ARGS("s", status), 0),
    SD_BUS_VTABLE_END,
}};

std::vector<sd_bus_vtable> StatusNotifierItem::methods(bool hasClicks) {
    std::vector<sd_bus_vtable> methods(vtable.begin(), vtable.end());
    if (!hasClicks) {
        std::erase_if(methods, [](const sd_bus_vtable& each) {
            return each.type == _SD_BUS_VTABLE_METHOD && each.x.method.handler == click &&
                   std::string_view(each.x.method.member) != "SecondaryActivate";
        });
    }
    return methods;
}

std::string iconsBesideProgram() {
    const std::string folder = folderOf(ownProgram()) + "/icons";
    struct stat status{};
    return ::stat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) ? folder : "";
}

}  // namespace kovra
