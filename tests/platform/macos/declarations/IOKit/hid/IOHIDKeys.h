// The keys and options of HID devices that BLE-kovra uses, declared for machines that are not Macs.
#pragma once

#include <stdint.h>

#define kIOHIDVendorIDKey "VendorID"
#define kIOHIDProductIDKey "ProductID"
#define kIOHIDProductKey "Product"

enum { kIOHIDOptionsTypeNone = 0x0 };
