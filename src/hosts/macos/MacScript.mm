#import <Foundation/Foundation.h>

#include "hosts/macos/MacScript.h"
#include "hosts/macos/MacStrings.h"

namespace velmora::hosts::macos {

platform::ScriptOutcome MacScript::run(const std::string& source) {
    platform::ScriptOutcome outcome;
    @autoreleasepool {
        NSAppleScript* script = [[NSAppleScript alloc] initWithSource:toNSString(source)];
        if (!script) {
            outcome.created = false;
            return outcome;
        }
        NSDictionary<NSString*, id>* error = nil;
        NSAppleEventDescriptor* result = [script executeAndReturnError:&error];
        if (error) {
            platform::ScriptError reported;
            id message = error[NSAppleScriptErrorMessage];
            if ([message isKindOfClass:[NSString class]]) reported.message = toStdString((NSString*)message);
            id number = error[NSAppleScriptErrorNumber];
            if ([number isKindOfClass:[NSNumber class]]) reported.number = [number longValue];
            reported.printed = toStdString([error description]);
            outcome.error = reported;
        }
        if (result && [result stringValue]) outcome.stringValue = toStdString([result stringValue]);
    }
    return outcome;
}

}  // namespace velmora::hosts::macos
