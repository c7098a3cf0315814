#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "BLE_kovra/platform/HotKeyService.h"
#include "BLE_kovra/platform/linux/bus/SessionBus.h"

namespace kovra {

// One key combination that the desktop's portal (org.freedesktop.portal.GlobalShortcuts) is asked for, for as long as
// this lives. The portal may replace it by another key, ask the user, refuse, or not know of such things; none of this
// is reported.
//
// Nothing waits for an answer. The portal is asked once, and again only when it, or the bus, has been away: a refusal
// and a session that the portal closes are final.
class PortalShortcut : public HotKeyService::Reference {
  public:
    // What the desktop knows the combination by from one start to the next.
    struct Description {
        std::string id;
        std::string text;
        std::string trigger;  // as freedesktop.org writes shortcuts, such as CTRL+ALT+t
    };

    PortalShortcut(SessionBus& bus, Description description, std::function<void()> pressed);
    ~PortalShortcut() override;
    PortalShortcut(const PortalShortcut&) = delete;
    PortalShortcut& operator=(const PortalShortcut&) = delete;

  private:
    using Step = void (PortalShortcut::*)(sd_bus_message* message);

    // The steps, each begun by the portal's answer to the one before.
    void introduce();
    void createSession();
    void listShortcuts();
    void bindShortcut();

    void busChanged(BusConnection* bus);
    void ownerChanged(std::string_view before, std::string_view now);
    void sessionCreated(sd_bus_message* response);
    void shortcutsListed(sd_bus_message* response);
    void shortcutBound(sd_bus_message* response);
    void activated(sd_bus_message* message);
    void deactivated(sd_bus_message* message);

    bool isOurs(sd_bus_message* message) const;
    void reset();

    // A name for a request, whose response begins the next step.
    std::string newRequest(Step next);
    BusToken receive(const std::string& path, const char* interface, const char* signal, Step next);
    void call(const char* method, const BusConnection::Write& write);

    const Description description_;
    const std::function<void()> pressed_;
    BusConnection* bus_ = nullptr;
    bool isAsking_ = false;  // and has not been refused
    int requests_ = 0;
    std::string session_;
    std::optional<std::chrono::steady_clock::time_point> activeSince_;

    BusToken owner_;
    BusToken reply_;
    BusToken response_;
    BusToken activated_;
    BusToken deactivated_;
    BusToken closed_;
    BusToken listening_;
};

}  // namespace kovra
