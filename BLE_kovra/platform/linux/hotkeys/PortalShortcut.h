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
// By itself this object only looks whether the desktop has a key for the combination, when it is created and after the
// portal or the bus has restarted. Only request() may make the desktop open a dialog. No function waits for a reply.
class PortalShortcut : public HotKeyService::Reference {
  public:
    // Describes the combination to the desktop. The desktop recognizes it by `id` from one start to the next, and shows
    // the text to the user.
    struct Description {
        std::string id;
        std::string text;
        std::string trigger;  // in freedesktop.org's notation, such as CTRL+ALT+t
    };

    // `changed` is called when the portal has answered, when the user has changed the combination since, and when the
    // portal has closed its session or ended. The holder is never `another`, because no portal says so.
    PortalShortcut(SessionBus& bus, Description description, std::function<void()> pressed,
                   std::function<void(HotKeyState)> changed);
    ~PortalShortcut() override;
    PortalShortcut(const PortalShortcut&) = delete;
    PortalShortcut& operator=(const PortalShortcut&) = delete;

    // Has no effect unless the portal has answered that it does not know the combination, or that it has no key, or an
    // earlier request has failed.
    void request() override;

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
    void sessionClosed(sd_bus_message* message);
    void activated(sd_bus_message* message);
    void deactivated(sd_bus_message* message);

    bool isOurs(sd_bus_message* message) const;
    // Writes the list of shortcuts, which contains this one.
    void describe(BusWriter& arguments) const;
    bool isRequested(const std::string& combination) const;
    // Reports the holder and, if the hot key is ours, its combination.
    void report(HotKeyState::Holder holder, std::string combination = "");
    void refuse();
    // Handles an error of the portal. An error in a request counts as the user's refusal, since the portal supports
    // shortcuts. Otherwise it does not support them.
    void fail();
    void closeSession();
    // Forgets the session and what was requested in it.
    void endSession();

    // Returns the name of a new request. The portal's response to that request starts the step `next`.
    std::string newRequest(Step next);
    BusToken subscribe(const std::string& path, const char* interface, const char* signal, Step next);
    void call(const char* method, const BusConnection::Write& write);

    const Description description_;
    const std::function<void()> pressed_;
    const std::function<void(HotKeyState)> changed_;
    BusConnection* bus_ = nullptr;
    bool isRegistered_ = false;    // the steps were started after the last refuse()
    bool mayBeRequested_ = false;  // by the state that was reported last
    bool isAsking_ = false;        // a request has not been answered yet
    bool wasBound_ = false;        // the session was used for a request; a portal accepts one per session
    int requests_ = 0;
    std::string session_;
    std::optional<std::chrono::steady_clock::time_point> activeSince_;

    BusToken owner_;
    BusToken reply_;
    BusToken response_;
    BusToken activated_;
    BusToken deactivated_;
    BusToken shortcutsChanged_;
    BusToken closed_;
    BusToken listening_;
};

}  // namespace kovra
