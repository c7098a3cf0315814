// The parts of CoreFoundation that BLE-kovra uses, declared for machines that are not Macs.
#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef unsigned char Boolean;
typedef uint8_t UInt8;
typedef int32_t SInt32;
typedef uint32_t UInt32;
typedef uint32_t OSType;
typedef SInt32 OSStatus;
typedef uint16_t UniChar;

typedef long CFIndex;
typedef unsigned long CFOptionFlags;
typedef unsigned long CFTypeID;
typedef double CFTimeInterval;
typedef const void* CFTypeRef;
typedef CFTypeRef CFPropertyListRef;

typedef const struct __CFAllocator* CFAllocatorRef;
typedef const struct __CFArray* CFArrayRef;
typedef const struct __CFBoolean* CFBooleanRef;
typedef const struct __CFData* CFDataRef;
typedef const struct __CFDictionary* CFDictionaryRef;
typedef const struct __CFLocale* CFLocaleRef;
typedef const struct __CFNumber* CFNumberRef;
typedef const struct __CFString* CFStringRef;
typedef struct __CFFileDescriptor* CFFileDescriptorRef;
typedef struct __CFMessagePort* CFMessagePortRef;
typedef struct __CFRunLoop* CFRunLoopRef;
typedef struct __CFRunLoopSource* CFRunLoopSourceRef;

typedef struct {
    CFIndex location;
    CFIndex length;
} CFRange;

extern const CFAllocatorRef kCFAllocatorDefault;

CFTypeRef CFRetain(CFTypeRef object);
void CFRelease(CFTypeRef object);
CFTypeID CFGetTypeID(CFTypeRef object);

// Texts

typedef UInt32 CFStringEncoding;
enum { kCFStringEncodingUTF8 = 0x08000100 };

CFTypeID CFStringGetTypeID(void);
CFStringRef CFStringCreateWithBytes(CFAllocatorRef allocator, const UInt8* bytes, CFIndex count,
                                    CFStringEncoding encoding, Boolean is_external);
CFIndex CFStringGetLength(CFStringRef text);
CFIndex CFStringGetBytes(CFStringRef text, CFRange range, CFStringEncoding encoding, UInt8 loss_byte,
                         Boolean is_external, UInt8* buffer, CFIndex room, CFIndex* used);

typedef CFIndex CFComparisonResult;
enum { kCFCompareLessThan = -1L, kCFCompareEqualTo = 0, kCFCompareGreaterThan = 1 };

typedef CFOptionFlags CFStringCompareFlags;
enum { kCFCompareCaseInsensitive = 1UL, kCFCompareNonliteral = 16UL };

CFComparisonResult CFStringCompareWithOptionsAndLocale(CFStringRef first, CFStringRef second, CFRange range_of_first,
                                                       CFStringCompareFlags flags, CFLocaleRef locale);

// Booleans, numbers, arrays, dictionaries

extern const CFBooleanRef kCFBooleanTrue;
extern const CFBooleanRef kCFBooleanFalse;
CFTypeID CFBooleanGetTypeID(void);
Boolean CFBooleanGetValue(CFBooleanRef truth);

typedef CFIndex CFNumberType;
enum { kCFNumberSInt64Type = 4, kCFNumberDoubleType = 13 };
CFTypeID CFNumberGetTypeID(void);
CFNumberRef CFNumberCreate(CFAllocatorRef allocator, CFNumberType type, const void* value);
// If the number does not fit into the type, stores an approximation and returns false.
Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value);

typedef struct {
    CFIndex version;
    const void* (*retain)(CFAllocatorRef allocator, const void* value);
    void (*release)(CFAllocatorRef allocator, const void* value);
    CFStringRef (*copyDescription)(const void* value);
    Boolean (*equal)(const void* first, const void* second);
} CFArrayCallBacks;
extern const CFArrayCallBacks kCFTypeArrayCallBacks;
CFTypeID CFArrayGetTypeID(void);
CFArrayRef CFArrayCreate(CFAllocatorRef allocator, const void** values, CFIndex count,
                         const CFArrayCallBacks* callbacks);
CFIndex CFArrayGetCount(CFArrayRef array);
const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index);

typedef struct CFDictionaryKeyCallBacks CFDictionaryKeyCallBacks;  // opaque
typedef struct CFDictionaryValueCallBacks CFDictionaryValueCallBacks;
extern const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks;
extern const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks;
CFDictionaryRef CFDictionaryCreate(CFAllocatorRef allocator, const void** keys, const void** values, CFIndex count,
                                   const CFDictionaryKeyCallBacks* key_callbacks,
                                   const CFDictionaryValueCallBacks* value_callbacks);

// The user's languages and preferences

CFArrayRef CFLocaleCopyPreferredLanguages(void);
CFLocaleRef CFLocaleCopyCurrent(void);

extern const CFStringRef kCFPreferencesCurrentApplication;
CFPropertyListRef CFPreferencesCopyAppValue(CFStringRef key, CFStringRef application);
void CFPreferencesSetAppValue(CFStringRef key, CFPropertyListRef value, CFStringRef application);
Boolean CFPreferencesAppSynchronize(CFStringRef application);

// For tests on a Mac.
extern const CFStringRef kCFPreferencesAnyHost;
extern const CFStringRef kCFPreferencesCurrentUser;
CFArrayRef CFPreferencesCopyKeyList(CFStringRef application, CFStringRef user, CFStringRef host);

// The run loop

typedef CFStringRef CFRunLoopMode;
extern const CFRunLoopMode kCFRunLoopDefaultMode;
extern const CFRunLoopMode kCFRunLoopCommonModes;

typedef SInt32 CFRunLoopRunResult;
enum { kCFRunLoopRunFinished = 1, kCFRunLoopRunStopped = 2, kCFRunLoopRunTimedOut = 3, kCFRunLoopRunHandledSource = 4 };

CFRunLoopRef CFRunLoopGetMain(void);
CFRunLoopRunResult CFRunLoopRunInMode(CFRunLoopMode mode, CFTimeInterval seconds, Boolean return_after_source_handled);
void CFRunLoopAddSource(CFRunLoopRef loop, CFRunLoopSourceRef source, CFRunLoopMode mode);

typedef int CFFileDescriptorNativeDescriptor;
enum { kCFFileDescriptorReadCallBack = 1UL };
typedef void (*CFFileDescriptorCallBack)(CFFileDescriptorRef descriptor, CFOptionFlags types, void* info);
typedef struct {
    CFIndex version;
    void* info;
    void* (*retain)(void* info);
    void (*release)(void* info);
    CFStringRef (*copyDescription)(void* info);
} CFFileDescriptorContext;

CFFileDescriptorRef CFFileDescriptorCreate(CFAllocatorRef allocator, CFFileDescriptorNativeDescriptor number,
                                           Boolean close_on_invalidate, CFFileDescriptorCallBack callback,
                                           const CFFileDescriptorContext* context);
void CFFileDescriptorEnableCallBacks(CFFileDescriptorRef descriptor, CFOptionFlags types);
void CFFileDescriptorInvalidate(CFFileDescriptorRef descriptor);
CFRunLoopSourceRef CFFileDescriptorCreateRunLoopSource(CFAllocatorRef allocator, CFFileDescriptorRef descriptor,
                                                       CFIndex order);

// Messages between processes

typedef CFDataRef (*CFMessagePortCallBack)(CFMessagePortRef local, SInt32 message, CFDataRef data, void* info);
typedef struct {
    CFIndex version;
    void* info;
    const void* (*retain)(const void* info);
    void (*release)(const void* info);
    CFStringRef (*copyDescription)(const void* info);
} CFMessagePortContext;
enum { kCFMessagePortSuccess = 0, kCFMessagePortSendTimeout = -1 };

CFMessagePortRef CFMessagePortCreateLocal(CFAllocatorRef allocator, CFStringRef name, CFMessagePortCallBack callback,
                                          CFMessagePortContext* context, Boolean* should_free_info);
CFMessagePortRef CFMessagePortCreateRemote(CFAllocatorRef allocator, CFStringRef name);
SInt32 CFMessagePortSendRequest(CFMessagePortRef remote, SInt32 message, CFDataRef data, CFTimeInterval send_timeout,
                                CFTimeInterval receive_timeout, CFStringRef reply_mode, CFDataRef* returned);
void CFMessagePortInvalidate(CFMessagePortRef port);
CFRunLoopSourceRef CFMessagePortCreateRunLoopSource(CFAllocatorRef allocator, CFMessagePortRef local, CFIndex order);

#ifdef __cplusplus
}
#endif
