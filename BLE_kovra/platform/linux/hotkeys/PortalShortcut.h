#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "BLE_kovra/platform/HotKeyService.h"
#include "BLE_kovra/platform/linux/bus/SessionBus.h"

namespace kovra {

// A key combination that is requested from the desktop's portal (org.freedesktop.portal.GlobalShortcuts), for as long
// as this object lives. The portal may assign another key, ask the user, refuse, or not support shortcuts.
//
// No function waits for a reply. The combination is requested once, and again only after the portal or the bus has
// restarted. Until then a refusal is final, and a session that the portal has closed stays closed.
class PortalShortcut : public HotKeyService::Reference {
  public:
    // Describes the combination to the desktop. The desktop recognizes it by `id` from one start to the next.
    struct Description {
        std::string id;
        std::string text;
        std::string trigger;  // in freedesktop.org's notation, such as CTRL+ALT+t
    };

    // The combination that the desktop has assigned, in its own words; empty if it does not tell. Nothing if it assigns
    // none.
    using Assignment = std::optional<std::string>;

    // `assigned` is called when the portal has answered, and when the user has changed the combination since.
    PortalShortcut(SessionBus& bus, Description description, std::function<void()> pressed,
                   std::function<void(const Assignment&)> assigned);
    ~PortalShortcut() override;
    PortalShortcut(const PortalShortcut&) = delete;
    PortalShortcut& operator=(const PortalShortcut&) = delete;

  private:
    using Step = void (PortalShortcut::*)(sd_bus_message* message);

    // The steps of the request. Each starts after the portal's reply to the one before.
    void registerApplication();
    void createSession();
    void listShortcuts();
    void bindShortcut();

    void busChanged(BusConnection* bus);
    void ownerChanged(std::string_view before, std::string_view now);
    void sessionCreated(sd_bus_message* response);
    void shortcutsListed(sd_bus_message* response);
    void shortcutBound(sd_bus_message* response);
    void shortcutsChanged(sd_bus_message* message);
    void activated(sd_bus_message* message);
    void deactivated(sd_bus_message* message);

    bool isOurs(sd_bus_message* message) const;
    void refuse();
    void reset();

    // Returns the name of a new request. The portal's response to that request starts the step `next`.
    std::string newRequest(Step next);
    BusToken subscribe(const std::string& path, const char* interface, const char* signal, Step next);
    void call(const char* method, const BusConnection::Write& write);

    const Description description_;
    const std::function<void()> pressed_;
    const std::function<void(const Assignment&)> assigned_;
    BusConnection* bus_ = nullptr;
    bool isRequested_ = false;  // the request was started after the last reset()
    int requests_ = 0;
    std::string session_;
    std::optional<std::chrono::steady_clock::time_point> activeSince_;

    BusToken owner_;
    BusToken reply_;
    BusToken response_;
    BusToken activated_;
    BusToken deactivated_;
    BusToken changed_;
    BusToken closed_;
    BusToken listening_;
};

}  // namespace kovra
