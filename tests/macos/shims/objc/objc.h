// Check-only: the Objective-C runtime's basic types, as the modern runtime
// declares them. GNUstep's headers in Debian expect gcc's legacy runtime,
// whose headers clang cannot read in ARC mode; with these, clang checks the
// adapter under ARC with weak references and synthesized properties, as on
// the platform. `id` is clang's own builtin type.
#pragma once

#ifndef __GNU_LIBOBJC__
#define __GNU_LIBOBJC__ 20110608  // makes GNUstep include <objc/runtime.h>, not the legacy API
#endif

#include <stddef.h>
#include <stdint.h>

typedef struct objc_class* Class;
typedef struct objc_selector* SEL;
typedef signed char BOOL;
#define YES ((BOOL)1)
#define NO ((BOOL)0)
#ifndef nil
#ifdef __cplusplus
#define nil nullptr
#else
#define nil ((id)0)
#endif
#endif
#ifndef Nil
#ifdef __cplusplus
#define Nil nullptr
#else
#define Nil ((Class)0)
#endif
#endif
typedef id (*IMP)(id, SEL, ...);

#ifdef __cplusplus
extern "C" {
#endif
const char* sel_getName(SEL selector);
SEL sel_registerName(const char* name);
const char* object_getClassName(id object);
#ifdef __cplusplus
}
#endif
