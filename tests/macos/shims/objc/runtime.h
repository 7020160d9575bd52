// Check-only: the runtime functions GNUstep's headers name (see objc.h).
#pragma once

#include <objc/objc.h>

typedef struct objc_method* Method;
typedef struct objc_ivar* Ivar;
typedef struct objc_property* objc_property_t;
#ifdef __OBJC__
@class Protocol;
#else
typedef struct objc_object Protocol;
#endif
struct objc_method_description {
    SEL name;
    const char* types;
};

#ifdef __cplusplus
extern "C" {
#endif
Class object_getClass(id object);
const char* class_getName(Class cls);
Class objc_getClass(const char* name);
Class class_getSuperclass(Class cls);
BOOL class_respondsToSelector(Class cls, SEL selector);
#ifdef __cplusplus
}
#endif
