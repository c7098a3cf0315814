#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "BLE_kovra/platform/linux/bus/SessionBus.h"

namespace kovra {

// One key combination that the desktop's portal (org.freedesktop.portal.GlobalShortcuts) is asked for, for as long as
// this lives. The portal may take it for another key, ask the user, refuse, or not know of such things; none of this is
// told.
//
// Nothing waits for an answer. The portal is asked once; again only when it, or the bus, has been away: a refusal and a
// session that the portal closes are the desktop's last word.
class PortalShortcut {
  public:
    // What the combination is known by to the desktop from one start to the next.
    struct Wish {
        std::string id;
        std::string description;
        std::string trigger;  // as freedesktop.org writes shortcuts, such as CTRL+ALT+t
    };

    PortalShortcut(SessionBus& bus, Wish wish, std::function<void()> pressed);
    ~PortalShortcut();
    PortalShortcut(const PortalShortcut&) = delete;
    PortalShortcut& operator=(const PortalShortcut&) = delete;

  private:
    using Heard = void (PortalShortcut::*)(sd_bus_message* message);

    // The steps, each begun by what the portal says to the one before.
    void introduce();
    void createSession();
    void listShortcuts();
    void bindShortcut();

    void watchOwner();
    void ownerChanged(sd_bus_message* message);
    void introduced(sd_bus_message* message);
    void answered(sd_bus_message* message);
    void sessionCreated(sd_bus_message* response);
    void shortcutsListed(sd_bus_message* response);
    void shortcutBound(sd_bus_message* response);
    void activated(sd_bus_message* message);
    void deactivated(sd_bus_message* message);
    void sessionClosed(sd_bus_message* message);

    bool isOurs(sd_bus_message* message) const;
    void forget();

    // A name for a request, whose response will be heard.
    template <Heard heard>
    std::string newRequest();
    template <Heard heard>
    BusSlot listenTo(const std::string& path, const char* interface, const char* signal);
    template <Heard heard>
    static int ring(sd_bus_message* message, void* context, sd_bus_error* error);
    template <typename... Values>
    void call(const char* interface, const char* method, const char* types, Values... values);

    SessionBus& bus_;
    const Wish wish_;
    const std::function<void()> pressed_;
    bool isAsking_ = false;  // and has not been refused
    int requests_ = 0;
    std::string session_;
    std::optional<std::chrono::steady_clock::time_point> activeSince_;

    BusSlot owner_;
    BusSlot reply_;
    BusSlot response_;
    BusSlot activated_;
    BusSlot deactivated_;
    BusSlot closed_;
    std::shared_ptr<SessionBus::Listener> listener_;
    std::shared_ptr<PortalShortcut*> self_;  // for blocks that may run when this is gone
};

}  // namespace kovra
