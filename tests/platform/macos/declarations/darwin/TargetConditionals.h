// GoogleTest includes this header of macOS.
#pragma once

#define TARGET_OS_IPHONE 0
#define TARGET_OS_MAC 1
