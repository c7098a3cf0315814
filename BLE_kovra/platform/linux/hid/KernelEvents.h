#pragma once

namespace kovra {

// Returns whether the kernel's events about devices arrive in this process. The kernel sends them to each network
// namespace that belongs to the initial user namespace, and to no other one, such as that of a container without root.
// Returns false if this cannot be determined, too.
bool kernelEventsArrive();

}  // namespace kovra
