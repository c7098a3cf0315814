// The types and results of IOKit that BLE-kovra uses, declared for machines that are not Macs.
#pragma once

#include <stdint.h>

typedef int kern_return_t;
typedef unsigned int mach_port_t;
#define KERN_SUCCESS 0
#define MACH_PORT_NULL 0

typedef kern_return_t IOReturn;
typedef uint32_t IOOptionBits;
typedef mach_port_t io_object_t;
typedef io_object_t io_registry_entry_t;
typedef io_object_t io_service_t;
