#import <Foundation/Foundation.h>

#include <algorithm>

#include "hosts/macos/MacFiles.h"
#include "hosts/macos/MacStrings.h"

namespace velmora::hosts::macos {

namespace {

void setError(std::string* error, NSError* reported) {
    if (error && reported) *error = toStdString([reported localizedDescription]);
}

}  // namespace

std::string MacFiles::homeDirectory() const {
    @autoreleasepool {
        return toStdString(NSHomeDirectory());
    }
}

std::string MacFiles::applicationSupportDirectory() const {
    @autoreleasepool {
        NSArray<NSURL*>* urls = [[NSFileManager defaultManager] URLsForDirectory:NSApplicationSupportDirectory
                                                                       inDomains:NSUserDomainMask];
        if (NSURL* first = [urls firstObject]) return toStdString([first path]);
        return homeDirectory() + "/Library/Application Support";
    }
}

bool MacFiles::exists(const std::string& path) const {
    @autoreleasepool {
        return [[NSFileManager defaultManager] fileExistsAtPath:toNSString(path)];
    }
}

bool MacFiles::isDirectory(const std::string& path) const {
    @autoreleasepool {
        BOOL directory = NO;
        return [[NSFileManager defaultManager] fileExistsAtPath:toNSString(path) isDirectory:&directory] && directory;
    }
}

std::optional<std::string> MacFiles::read(const std::string& path, std::string* error) const {
    @autoreleasepool {
        NSError* reported = nil;
        NSData* data = [NSData dataWithContentsOfFile:toNSString(path) options:0 error:&reported];
        if (!data) {
            setError(error, reported);
            return std::nullopt;
        }
        return toStdString(data);
    }
}

bool MacFiles::write(const std::string& path, const std::string& data, bool atomic, std::string* error) {
    @autoreleasepool {
        NSError* reported = nil;
        const NSDataWritingOptions options = atomic ? NSDataWritingAtomic : 0;
        if ([toNSData(data) writeToFile:toNSString(path) options:options error:&reported]) return true;
        setError(error, reported);
        return false;
    }
}

bool MacFiles::createDirectories(const std::string& path, std::string* error) {
    @autoreleasepool {
        NSError* reported = nil;
        if ([[NSFileManager defaultManager] createDirectoryAtPath:toNSString(path)
                                      withIntermediateDirectories:YES
                                                       attributes:nil
                                                            error:&reported]) {
            return true;
        }
        setError(error, reported);
        return false;
    }
}

bool MacFiles::remove(const std::string& path, std::string* error) {
    @autoreleasepool {
        NSError* reported = nil;
        if ([[NSFileManager defaultManager] removeItemAtPath:toNSString(path) error:&reported]) return true;
        setError(error, reported);
        return false;
    }
}

std::vector<std::string> MacFiles::list(const std::string& path) const {
    std::vector<std::string> names;
    @autoreleasepool {
        NSArray<NSString*>* entries = [[NSFileManager defaultManager] contentsOfDirectoryAtPath:toNSString(path)
                                                                                           error:nil];
        for (NSString* entry in entries) names.push_back(toStdString(entry));
    }
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace velmora::hosts::macos
