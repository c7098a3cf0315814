#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "BLE_kovra/platform/linux/wire/LineReader.h"

namespace kovra {

// The descriptor of the socket in the window process.
constexpr int windowSocket = 3;

// The longest lines that each side accepts, in bytes. `longestToWindow` is enough for a window with about ten thousand
// devices, `longestToResident` for one action of the user.
constexpr std::size_t longestToWindow = 16'000'000;
constexpr std::size_t longestToResident = 64'000;

// Reads available data once, without blocking. Returns the lines that are now complete. Returns nullopt at the end of
// the stream or after an error.
std::optional<std::vector<std::string>> receiveLines(int socket, LineReader& reader);

// Sends one short line without blocking. Returns false and drops the whole line if the buffer is full or the peer has
// closed the socket.
bool sendLine(int socket, std::string_view line);

// Buffers lines for a peer that may read slowly. It never blocks. Besides a partly sent line it keeps only the newest
// line of each kind.
class Outbox {
  public:
    void put(std::size_t kind, std::string line) { waiting_[kind] = std::move(line); }

    enum class State { empty, waiting, broken };
    // Sends as much as the socket accepts.
    State flush(int socket);

  private:
    std::string sending_;
    std::size_t sent_ = 0;  // bytes of `sending_`
    std::map<std::size_t, std::string> waiting_;
};

}  // namespace kovra
