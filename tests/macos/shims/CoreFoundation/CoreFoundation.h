// Check-only: the Core Foundation C interface the adapter uses (types,
// retain and release, arrays, numbers, the main run loop's observers), with
// the platform's signatures. The object types are declared bridged, so ARC
// checks the casts.
#pragma once

#include <stdint.h>

#import <Foundation/Foundation.h>

typedef const void* CFTypeRef;
typedef unsigned long CFTypeID;
typedef long CFIndex;
typedef unsigned long CFOptionFlags;
typedef unsigned char Boolean;
typedef const struct __attribute__((objc_bridge(NSString))) __CFString* CFStringRef;
typedef const struct __attribute__((objc_bridge(NSArray))) __CFArray* CFArrayRef;
typedef const struct __attribute__((objc_bridge(NSNumber))) __CFNumber* CFNumberRef;
typedef const struct __attribute__((objc_bridge(NSNumber))) __CFBoolean* CFBooleanRef;
typedef const struct __attribute__((objc_bridge(id))) __CFAllocator* CFAllocatorRef;
typedef struct __attribute__((objc_bridge_mutable(id))) __CFRunLoop* CFRunLoopRef;
typedef struct __attribute__((objc_bridge_mutable(id))) __CFRunLoopObserver* CFRunLoopObserverRef;

typedef enum : CFOptionFlags {
    kCFRunLoopEntry = (1UL << 0),
    kCFRunLoopBeforeTimers = (1UL << 1),
    kCFRunLoopBeforeSources = (1UL << 2),
    kCFRunLoopBeforeWaiting = (1UL << 5),
    kCFRunLoopAfterWaiting = (1UL << 6),
    kCFRunLoopExit = (1UL << 7),
} CFRunLoopActivity;

#ifdef __cplusplus
extern "C" {
#endif
extern const CFAllocatorRef kCFAllocatorDefault;
extern const CFStringRef kCFRunLoopCommonModes;

CFTypeRef CFRetain(CFTypeRef object);
void CFRelease(CFTypeRef object);
CFTypeID CFGetTypeID(CFTypeRef object);
CFTypeID CFStringGetTypeID(void);
CFTypeID CFArrayGetTypeID(void);
CFTypeID CFNumberGetTypeID(void);
CFTypeID CFBooleanGetTypeID(void);
CFIndex CFArrayGetCount(CFArrayRef array);
const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index);
Boolean CFBooleanGetValue(CFBooleanRef boolean);
Boolean CFNumberIsFloatType(CFNumberRef number);

CFRunLoopRef CFRunLoopGetMain(void);
CFRunLoopObserverRef CFRunLoopObserverCreateWithHandler(CFAllocatorRef allocator, CFOptionFlags activities,
                                                        Boolean repeats, CFIndex order,
                                                        void (^block)(CFRunLoopObserverRef observer,
                                                                      CFRunLoopActivity activity));
void CFRunLoopAddObserver(CFRunLoopRef loop, CFRunLoopObserverRef observer, CFStringRef mode);
#ifdef __cplusplus
}
#endif
