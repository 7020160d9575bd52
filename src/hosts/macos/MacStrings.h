// Text between the library (UTF-8 std::string) and Foundation (NSString).
//
// Provides: toNSString, toStdString, toNSData, toStdString(NSData*).
// Invalid UTF-8 from the library is repaired (U+FFFD) on the way in, as the
// platform's own String(cString:) does, so no text turns into nil.
#pragma once

#import <Foundation/Foundation.h>

#include <string>
#include <string_view>

#include "support/Unicode.h"

namespace velmora::hosts::macos {

inline NSString* toNSString(std::string_view text) {
    if (NSString* string = [[NSString alloc] initWithBytes:text.data() length:text.size() encoding:NSUTF8StringEncoding]) {
        return string;
    }
    // Not UTF-8: the same repair the library applies to the host's texts.
    const std::string repaired = support::repairedUTF8(text);
    return [[NSString alloc] initWithBytes:repaired.data() length:repaired.size() encoding:NSUTF8StringEncoding];
}

inline std::string toStdString(NSString* string) {
    if (!string) return {};
    const char* bytes = [string UTF8String];
    return bytes ? std::string(bytes) : std::string();
}

inline NSData* toNSData(std::string_view bytes) { return [NSData dataWithBytes:bytes.data() length:bytes.size()]; }

inline std::string toStdString(NSData* data) {
    if (!data) return {};
    return std::string(static_cast<const char*>([data bytes]), [data length]);
}

}  // namespace velmora::hosts::macos
