#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "BLE_kovra/control/Facts.h"

namespace kovra::control {

// Returns the state of ble-kovra-helper, from systemd over the system bus. If systemd cannot be asked, a process of the
// helper still shows that it runs, if it is root's or that of the helper's own user. `processes` is /proc.
Service helperService(const std::string& processes = "/proc");

// Returns the flag at this path. Opens neither links nor anything but a plain file.
Flag readFlag(const std::string& path);

// Returns the user whom this access control list lets write, besides the owner. `list` is the value of the extended
// attribute system.posix_acl_access. Returns nullopt if there is none, or if the list is damaged.
std::optional<uid_t> writerIn(std::string_view list);

// Returns the moment with its text in local time.
Moment momentOf(std::int64_t seconds);

}  // namespace kovra::control
