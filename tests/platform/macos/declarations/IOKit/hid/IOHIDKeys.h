// What BLE-kovra uses of the HID system's names, declared for machines that are no Macs.
#pragma once

#include <stdint.h>

#define kIOHIDVendorIDKey "VendorID"
#define kIOHIDProductIDKey "ProductID"
#define kIOHIDProductKey "Product"

enum { kIOHIDOptionsTypeNone = 0x0 };
