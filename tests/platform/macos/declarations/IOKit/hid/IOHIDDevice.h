// The functions of HID devices that BLE-kovra uses, declared for machines that are not Macs.
#pragma once

// This header does not include IOKitLib.h: a source that uses the registry must include it itself.
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
