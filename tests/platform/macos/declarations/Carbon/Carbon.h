// The parts of the Carbon Event Manager that BLE-kovra uses, declared for machines that are not Macs.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef unsigned long ItemCount;
typedef UInt32 OptionBits;

typedef struct OpaqueEventRef* EventRef;
typedef struct OpaqueEventTargetRef* EventTargetRef;
typedef struct OpaqueEventHandlerRef* EventHandlerRef;
typedef struct OpaqueEventHandlerCallRef* EventHandlerCallRef;
typedef struct OpaqueEventHotKeyRef* EventHotKeyRef;
typedef OSStatus (*EventHandlerUPP)(EventHandlerCallRef call, EventRef event, void* user_data);

typedef struct {
    OSType eventClass;
    UInt32 eventKind;
} EventTypeSpec;

typedef struct {
    OSType signature;
    UInt32 id;
} EventHotKeyID;

enum { noErr = 0, eventHotKeyExistsErr = -9878 };
enum { kEventClassKeyboard = 0x6B657962, kEventHotKeyPressed = 5, kEventHotKeyReleased = 6 };

EventTargetRef GetApplicationEventTarget(void);
OSStatus InstallEventHandler(EventTargetRef target, EventHandlerUPP handler, ItemCount type_count,
                             const EventTypeSpec* types, void* user_data, EventHandlerRef* installed);
OSStatus RemoveEventHandler(EventHandlerRef handler);
OSStatus RegisterEventHotKey(UInt32 key_code, UInt32 modifiers, EventHotKeyID id, EventTargetRef target,
                             OptionBits options, EventHotKeyRef* registered);
OSStatus UnregisterEventHotKey(EventHotKeyRef hot_key);

#ifdef __cplusplus
}
#endif
