// The functions of IOKit's registry that BLE-kovra uses, declared for machines that are not Macs.
#pragma once

#include <IOKit/IOTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

kern_return_t IORegistryEntryGetRegistryEntryID(io_registry_entry_t entry, uint64_t* number);

#ifdef __cplusplus
}
#endif
