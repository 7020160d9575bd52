#import <Foundation/Foundation.h>

#include <dispatch/dispatch.h>

#include "hosts/macos/MacScript.h"
#include "hosts/macos/MacStrings.h"

namespace velmora::hosts::macos {

namespace {

platform::ScriptOutcome runHere(const std::string& source) {
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
            outcome.error = reported;
        }
        if (result && [result stringValue]) outcome.stringValue = toStdString([result stringValue]);
    }
    return outcome;
}

}  // namespace

platform::ScriptOutcome MacScript::run(const std::string& source) {
    if ([NSThread isMainThread]) return runHere(source);
    __block platform::ScriptOutcome outcome;
    dispatch_sync(dispatch_get_main_queue(), ^{
        outcome = runHere(source);
    });
    return outcome;
}

}  // namespace velmora::hosts::macos
