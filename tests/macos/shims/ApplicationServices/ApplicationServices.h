// Check-only: the accessibility C interface the adapter uses, with the
// platform's signatures; GNUstep has none.
#pragma once

#include <stdint.h>

#include <CoreFoundation/CoreFoundation.h>

typedef const struct __attribute__((objc_bridge(id))) __AXUIElement* AXUIElementRef;

typedef enum : int32_t {
    kAXErrorSuccess = 0,
    kAXErrorFailure = -25200,
    kAXErrorIllegalArgument = -25201,
    kAXErrorInvalidUIElement = -25202,
    kAXErrorCannotComplete = -25204,
    kAXErrorAttributeUnsupported = -25205,
    kAXErrorActionUnsupported = -25206,
    kAXErrorNoValue = -25212,
    kAXErrorAPIDisabled = -25211,
} AXError;

#ifdef __cplusplus
extern "C" {
#endif
CFTypeID AXUIElementGetTypeID(void);
AXUIElementRef AXUIElementCreateApplication(pid_t pid);
AXError AXUIElementCopyAttributeValue(AXUIElementRef element, CFStringRef attribute, CFTypeRef* value);
AXError AXUIElementPerformAction(AXUIElementRef element, CFStringRef action);
Boolean AXIsProcessTrusted(void);
#ifdef __cplusplus
}
#endif
