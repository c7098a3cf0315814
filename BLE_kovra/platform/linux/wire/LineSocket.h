#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "BLE_kovra/platform/linux/wire/LineReader.h"

namespace kovra {

// The descriptor at which the window process finds its socket.
constexpr int windowSocket = 3;

// What each side takes in a line: the window process a window with some ten thousand devices, the resident program what
// the user did to one thing.
constexpr std::size_t longestToWindow = 16'000'000;
constexpr std::size_t longestToResident = 64'000;

// Reads once what is there, without waiting: the lines that came to their end with it. Null at the end of the stream.
std::optional<std::vector<std::string>> receiveLines(int socket, LineReader& reader);

// Sends one short line without waiting. False if the other side has not read for so long that there is no room, or is
// gone; the line is then dropped as a whole.
bool sendLine(int socket, std::string_view line);

// Lines on their way to somebody who may be slow to read. Never waits; keeps, besides the line that is halfway out, the
// newest of each kind alone.
class Outbox {
  public:
    void put(std::size_t kind, std::string line) { waiting_[kind] = std::move(line); }

    enum class State { empty, waiting, broken };
    // Sends what there is room for.
    State flush(int socket);

  private:
    std::string leaving_;
    std::size_t sent_ = 0;  // of `leaving_`
    std::map<std::size_t, std::string> waiting_;
};

}  // namespace kovra
