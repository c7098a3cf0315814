// The parts of Foundation that BLE-kovra uses, declared for machines that are not Macs.
#pragma once

#include <stddef.h>
#include <stdint.h>

#if defined(__OBJC_BOOL_IS_BOOL) && __OBJC_BOOL_IS_BOOL
typedef bool BOOL;
#else
typedef signed char BOOL;
#endif
#define YES __objc_yes
#define NO __objc_no
#define nil nullptr

typedef long NSInteger;
typedef unsigned long NSUInteger;
typedef double CGFloat;
typedef NSUInteger NSStringEncoding;
typedef double NSTimeInterval;

struct CGPoint {
    CGFloat x;
    CGFloat y;
};
struct CGSize {
    CGFloat width;
    CGFloat height;
};
struct CGRect {
    CGPoint origin;
    CGSize size;
};
typedef CGPoint NSPoint;
typedef CGSize NSSize;
typedef CGRect NSRect;

inline NSPoint NSMakePoint(CGFloat x, CGFloat y) { return {x, y}; }
inline NSSize NSMakeSize(CGFloat width, CGFloat height) { return {width, height}; }
inline NSRect NSMakeRect(CGFloat x, CGFloat y, CGFloat width, CGFloat height) { return {{x, y}, {width, height}}; }
inline constexpr NSPoint NSZeroPoint = {};
inline constexpr NSRect NSZeroRect = {};

enum : NSStringEncoding { NSUTF8StringEncoding = 4 };

@class NSString, NSDictionary, NSError;

@protocol NSObject
- (BOOL)isKindOfClass:(Class)aClass;
@end

__attribute__((objc_root_class))
@interface NSObject<NSObject>
+ (instancetype)alloc;
+ (Class)class;
- (instancetype)init;
@end

@interface NSString : NSObject
- (instancetype)initWithBytes:(const void*)bytes length:(NSUInteger)length encoding:(NSStringEncoding)encoding;
- (const char*)UTF8String;
@end

@interface NSNumber : NSObject
- (BOOL)boolValue;
- (double)doubleValue;
@end

struct NSFastEnumerationState;

@interface NSArray<__covariant ObjectType> : NSObject
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id __unsafe_unretained[])buffer
                                    count:(NSUInteger)length;
+ (instancetype)arrayWithObjects:(const ObjectType[])objects count:(NSUInteger)count;
- (NSUInteger)count;
- (ObjectType)objectAtIndex:(NSUInteger)index;
@end

@interface NSMutableArray<ObjectType> : NSArray <ObjectType>
+ (instancetype)array;
- (void)addObject:(ObjectType)object;
@end

@interface NSDictionary<KeyType, ObjectType> : NSObject
+ (instancetype)dictionaryWithObjects:(const ObjectType[])objects forKeys:(const KeyType[])keys count:(NSUInteger)count;
- (ObjectType)objectForKey:(KeyType)key;
@end

@interface NSError : NSObject
- (NSString*)localizedDescription;
@end

@interface NSURL : NSObject
+ (instancetype)URLWithString:(NSString*)text;
@end

@interface NSBundle : NSObject
+ (NSBundle*)mainBundle;
- (NSDictionary<NSString*, id>*)infoDictionary;
@end

@interface NSDate : NSObject
+ (NSDate*)distantFuture;
+ (NSDate*)distantPast;
@end

typedef NSString* NSRunLoopMode;
extern "C" NSRunLoopMode const NSDefaultRunLoopMode;

@interface NSThread : NSObject
+ (BOOL)isMainThread;
@end

typedef NSString* NSNotificationName;

@interface NSNotification : NSObject
@end

@interface NSNotificationCenter : NSObject
- (void)addObserver:(id)observer selector:(SEL)selector name:(NSNotificationName)name object:(id)object;
@end

extern "C" void NSLog(NSString* format, ...) __attribute__((format(__NSString__, 1, 2)));
