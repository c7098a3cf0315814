// What BLE-kovra uses of HID devices, declared for machines that are no Macs.
#pragma once

// Nothing of the registry: who asks for it includes it.
#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct __IOHIDDevice* IOHIDDeviceRef;

io_service_t IOHIDDeviceGetService(IOHIDDeviceRef device);
CFTypeRef IOHIDDeviceGetProperty(IOHIDDeviceRef device, CFStringRef key);

#ifdef __cplusplus
}
#endif
