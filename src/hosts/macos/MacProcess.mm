#import <Foundation/Foundation.h>

#include "hosts/macos/MacProcess.h"
#include "hosts/macos/MacStrings.h"

namespace velmora::hosts::macos {

platform::ProcessResult MacProcess::run(const std::string& path, const std::vector<std::string>& arguments) {
    platform::ProcessResult result;
    @autoreleasepool {
        NSTask* task = [[NSTask alloc] init];
        task.executableURL = [NSURL fileURLWithPath:toNSString(path)];
        NSMutableArray<NSString*>* words = [NSMutableArray arrayWithCapacity:arguments.size()];
        for (const auto& argument : arguments) [words addObject:toNSString(argument)];
        task.arguments = words;
        NSPipe* output = [NSPipe pipe];
        task.standardOutput = output;

        NSError* error = nil;
        if (![task launchAndReturnError:&error]) {
            result.error = toStdString([error localizedDescription]);
            return result;
        }
        result.started = true;
        // Read before waiting: a full pipe would stop the tool from exiting.
        NSData* data = [[output fileHandleForReading] readDataToEndOfFile];
        [task waitUntilExit];
        result.output = toStdString(data);
        result.exitStatus = [task terminationStatus];
    }
    return result;
}

}  // namespace velmora::hosts::macos
