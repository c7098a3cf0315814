#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "BLE_kovra/platform/linux/loop/SdEventLoop.h"
#include "BLE_kovra/platform/posix/FileDescriptor.h"

namespace kovra {

// Ends launch feedback on Wayland without a window, with the request set_startup_id of the protocol gtk_shell1. GNOME
// has this protocol. On other desktops nothing happens: there the feedback ends by itself within 5 s, or when a window
// uses the token.
//
// The few messages are written to the compositor's socket directly, so that the program needs no further library. A
// compositor that hangs delays nothing but finish(), and after anything unexpected the connection is closed.
class WaylandLaunch {
  public:
    explicit WaylandLaunch(SdEventLoop& loop) : loop_(loop) {}

    // Connects to the compositor, sends the request and disconnects.
    void end(const std::string& id);

    // Waits until the compositor has handled what was sent, until the deadline (see Deadline). It drops requests of a
    // process that ends before that.
    void finish();

    bool isConnected() const { return socket_ != nullptr; }

  private:
    void connect();
    void disconnect();
    void receive();
    // Handles the messages in `received_`. Returns whether the connection is still needed.
    bool handleMessages();
    bool handle(std::uint32_t object, std::uint32_t opcode, std::string_view arguments);
    void send(const std::string& messages);

    SdEventLoop& loop_;
    std::vector<std::string> ids_;  // those that were not sent yet
    std::unique_ptr<FileDescriptor> socket_;
    std::unique_ptr<SdEventLoop::Watch> watch_;
    std::string received_;
    std::uint32_t shell_ = 0;  // the compositor's number of gtk_shell1; 0 if it has not announced it
    bool areSent_ = false;     // the requests for the IDs that were known then
};

// Returns the path of the compositor's socket: $WAYLAND_DISPLAY, in $XDG_RUNTIME_DIR unless it is absolute. Returns an
// empty path if a variable is missing.
std::string waylandSocket();

}  // namespace kovra
