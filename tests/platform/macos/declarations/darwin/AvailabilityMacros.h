// GoogleTest includes this header of macOS.
#pragma once

#define MAC_OS_X_VERSION_MIN_REQUIRED 130000
