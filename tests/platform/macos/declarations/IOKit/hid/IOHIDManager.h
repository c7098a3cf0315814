// The functions of the HID manager that BLE-kovra uses, declared for machines that are not Macs.
#pragma once

#include <IOKit/hid/IOHIDDevice.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct __IOHIDManager* IOHIDManagerRef;
typedef void (*IOHIDDeviceCallback)(void* context, IOReturn result, void* sender, IOHIDDeviceRef device);

IOHIDManagerRef IOHIDManagerCreate(CFAllocatorRef allocator, IOOptionBits options);
void IOHIDManagerSetDeviceMatching(IOHIDManagerRef manager, CFDictionaryRef matching);
void IOHIDManagerRegisterDeviceMatchingCallback(IOHIDManagerRef manager, IOHIDDeviceCallback callback, void* context);
void IOHIDManagerRegisterDeviceRemovalCallback(IOHIDManagerRef manager, IOHIDDeviceCallback callback, void* context);
void IOHIDManagerScheduleWithRunLoop(IOHIDManagerRef manager, CFRunLoopRef loop, CFStringRef mode);
IOReturn IOHIDManagerOpen(IOHIDManagerRef manager, IOOptionBits options);

#ifdef __cplusplus
}
#endif
