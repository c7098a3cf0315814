#include "BLE_kovra/platform/linux/ui/Connection.h"

#include "BLE_kovra/platform/linux/wire/Encoding.h"

namespace kovra {

Connection::Connection(int socket) : socket_(socket), notifier_(socket, QSocketNotifier::Read) {
    QObject::connect(&notifier_, &QSocketNotifier::activated, [this] { receive(); });
}

void Connection::send(const ToResident& message) const { sendLine(socket_, encode(message)); }

void Connection::receive() {
    const auto lines = receiveLines(socket_, reader_);
    if (!lines) {
        notifier_.setEnabled(false);
        if (onEnd) onEnd();
        return;
    }
    for (const std::string& line : *lines) {
        const auto message = decodeToWindow(line);
        if (message && onMessage) onMessage(*message);
    }
}

}  // namespace kovra
