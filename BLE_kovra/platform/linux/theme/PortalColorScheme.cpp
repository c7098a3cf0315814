#include "BLE_kovra/platform/linux/theme/PortalColorScheme.h"

#include <cstdint>
#include <string_view>
#include <utility>

namespace kovra {

namespace {

constexpr const char* portal = "org.freedesktop.portal.Desktop";
constexpr const char* portalPath = "/org/freedesktop/portal/desktop";
constexpr const char* settings = "org.freedesktop.portal.Settings";
constexpr const char* appearance = "org.freedesktop.appearance";
constexpr const char* colorScheme = "color-scheme";

// The values of the setting. Any other value means no preference.
constexpr std::uint32_t prefersDark = 1;
constexpr std::uint32_t prefersLight = 2;

// Reads the next value of the message: a variant with the number. The method Read puts this variant into another one.
// Returns false if the value is of another type.
bool readScheme(sd_bus_message* message, std::uint32_t& scheme) {
    const char* contents = nullptr;
    char type = 0;
    if (sd_bus_message_peek_type(message, &type, &contents) <= 0 || type != SD_BUS_TYPE_VARIANT) return false;
    if (std::string_view(contents) == "v" && sd_bus_message_enter_container(message, type, contents) < 0) return false;
    return sd_bus_message_read(message, "v", "u", &scheme) > 0;
}

}  // namespace

PortalColorScheme::PortalColorScheme(SessionBus& bus, std::function<void(std::optional<PanelTone>)> changed)
    : changed_(std::move(changed)),
      listening_(bus.listen([this](BusConnection* connection) { busChanged(connection); })) {}

void PortalColorScheme::busChanged(BusConnection* bus) {
    bus_ = bus;
    for (BusToken* token : {&owner_, &reply_, &settings_}) token->reset();
    if (bus == nullptr) return;
    owner_ = bus->watchOwner(portal, [this](std::string_view, std::string_view now) {
        if (!now.empty()) read();
    });
    settings_ = bus->receive({portal, portalPath, settings, "SettingChanged", appearance},
                             [this](sd_bus_message* signal) { receive(signal); });
    read();
}

// Read is the older name of the method ReadOne. All versions of the portal have it.
void PortalColorScheme::read() {
    reply_ = bus_->call(
        {portal, portalPath, settings, "Read"},
        [](BusWriter& arguments) { arguments.text(appearance).text(colorScheme); },
        [this](sd_bus_message* answer) {
            if (sd_bus_message_is_method_error(answer, nullptr) == 0) take(answer);
        });
}

void PortalColorScheme::receive(sd_bus_message* signal) {
    const char* group = nullptr;
    const char* key = nullptr;
    if (sd_bus_message_read(signal, "ss", &group, &key) > 0 && std::string_view(key) == colorScheme) take(signal);
}

void PortalColorScheme::take(sd_bus_message* message) {
    std::uint32_t scheme = 0;
    if (!readScheme(message, scheme)) return;
    std::optional<PanelTone> tone;
    if (scheme == prefersDark) tone = PanelTone::dark;
    if (scheme == prefersLight) tone = PanelTone::light;
    if (std::exchange(tone_, tone) != tone) changed_(tone);
}

}  // namespace kovra
