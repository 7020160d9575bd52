// Check-only: the unified log's C interface as the adapter uses it.
#pragma once

#include <stdint.h>

#import <Foundation/NSObject.h>

@protocol OS_os_log <NSObject>
@end
typedef NSObject<OS_os_log>* os_log_t;

typedef enum : uint8_t {
    OS_LOG_TYPE_DEFAULT = 0x00,
    OS_LOG_TYPE_INFO = 0x01,
    OS_LOG_TYPE_DEBUG = 0x02,
    OS_LOG_TYPE_ERROR = 0x10,
    OS_LOG_TYPE_FAULT = 0x11,
} os_log_type_t;

#ifdef __cplusplus
extern "C" {
#endif
os_log_t os_log_create(const char* subsystem, const char* category);
// The platform's os_log_with_type is a macro that checks its format itself
// (it reads "%{public}s"); here a plain variadic function stands in.
void velmora_check_os_log_with_type(os_log_t log, os_log_type_t type, const char* format, ...);
#ifdef __cplusplus
}
#endif
#define os_log_with_type(log, type, format, ...) velmora_check_os_log_with_type(log, type, format, ##__VA_ARGS__)
